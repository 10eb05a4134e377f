#include "wave/FrameBlock.h"

#include <cstring>
#include <new>

namespace {

constexpr std::align_val_t kAlignment{32};

} // namespace

FrameBlock::~FrameBlock()
{
    ::operator delete[](memory, kAlignment);
}

bool FrameBlock::Prepare(std::uint32_t frames, std::uint32_t newChannels, std::uint32_t newBytesPerFrame)
{
    if (newChannels == channels && newBytesPerFrame == bytesPerFrame && frames * newBytesPerFrame == length)
        return true;
    if (newBytesPerFrame > kMostBytesPerFrame || newChannels > kMostChannels || frames > kMostFrames ||
        newChannels > newBytesPerFrame)
        return false;
    const std::uint32_t newLength = frames * newBytesPerFrame;
    if (newLength > capacity) {
        auto* grown = static_cast<std::uint8_t*>(::operator new[](newLength, kAlignment, std::nothrow));
        if (!grown)
            return false;
        if (length > 0)
            std::memcpy(grown, memory, length);
        std::memset(grown + length, 0, newLength - length);
        ::operator delete[](memory, kAlignment);
        memory = grown;
        capacity = newLength;
    } else if (newLength > length) {
        std::memset(memory + length, 0, newLength - length);
    }
    length = newLength;
    channels = newChannels;
    bytesPerFrame = newBytesPerFrame;
    return true;
}

void FrameBlock::Cut(std::uint32_t newLength)
{
    if (newLength < length)
        length = newLength;
}
