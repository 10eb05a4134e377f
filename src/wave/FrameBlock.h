#pragma once

#include <cstdint>

class FileStream;

// A caller's block of sample frames: memory aligned to 32 bytes, zero-filled
// up to the requested length. Not copied.
class FrameBlock {
public:
    // At most this many frames at once, of fewer than 25 bytes and up to 8
    // channels each.
    static constexpr std::uint32_t kMostFrames = 0x100000;
    static constexpr std::uint32_t kMostBytesPerFrame = 24;
    static constexpr std::uint32_t kMostChannels = 8;

    FrameBlock() = default;
    ~FrameBlock();
    FrameBlock(const FrameBlock&) = delete;
    FrameBlock& operator=(const FrameBlock&) = delete;

    // Sizes the block for frames of this shape; a shape out of the limits
    // fails with nothing changed. Within the capacity only the length
    // changes; above it new memory takes the old content. New bytes are
    // zero.
    bool Prepare(std::uint32_t frames, std::uint32_t newChannels, std::uint32_t newBytesPerFrame);
    // Cuts the length to fewer bytes.
    void Cut(std::uint32_t newLength);

    const std::uint8_t* Data() const { return memory; }
    std::uint8_t* Data() { return memory; }
    std::uint32_t Length() const { return length; }
    std::uint32_t Capacity() const { return capacity; }
    std::uint32_t GetChannels() const { return channels; }
    std::uint32_t GetFrameCount() const { return bytesPerFrame ? length / bytesPerFrame : 0; }

private:
    std::uint32_t capacity = 0;
    std::uint32_t length = 0;
    std::uint8_t* memory = nullptr;
    std::uint32_t bytesPerFrame = 0;
    std::uint32_t channels = 0;
};

// What hands out sample frames by frame number.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    // count frames from first through stream into block; false when no
    // frame could be read.
    virtual bool ReadFrames(FileStream& stream, FrameBlock& block, std::int64_t first, std::int32_t count) = 0;
};
