#include "files/ByteBlock.h"

#include "files/FileStream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

ByteBlock::~ByteBlock()
{
    Free();
}

// Sets the size in use. Growing keeps the bytes in use and zero-fills the new
// memory; shrinking keeps the memory, so bytes between an old and a new size
// within the capacity keep what they held. Resize(0) frees the memory. False
// when memory runs out; the block is then unchanged.
bool ByteBlock::Resize(std::uint32_t newSize)
{
    if (newSize == 0) {
        Free();
        return true;
    }
    if (newSize > capacity && !Grow(newSize))
        return false;
    size = newSize;
    return true;
}

// The first allocation is exact; later ones grow by half the capacity at
// least, so that a block filled piece by piece is copied rarely.
bool ByteBlock::Grow(std::uint32_t needed)
{
    std::uint64_t newCapacity;
    if (!data) {
        newCapacity = std::max(growBy, needed);
    } else {
        std::uint64_t step = growBy != 0 ? growBy : std::max<std::uint32_t>(capacity / 2, needed - capacity);
        newCapacity = std::max<std::uint64_t>(needed, std::min<std::uint64_t>(capacity + step, UINT32_MAX));
    }
    auto* memory = static_cast<std::uint8_t*>(std::calloc(newCapacity, 1));
    if (!memory)
        return false;
    if (data) {
        std::memcpy(memory, data, size);
        std::free(data);
    }
    data = memory;
    capacity = static_cast<std::uint32_t>(newCapacity);
    return true;
}

void ByteBlock::Free()
{
    // An empty block is freed for every empty chunk of a walk.
    if (!data)
        return;
    std::free(data);
    data = nullptr;
    size = 0;
    capacity = 0;
}

// Reads size bytes at the stream's position and cuts the block to what came.
// False, with the block freed, when the size is 0 or nothing came.
bool ByteBlock::ReadFrom(FileStream& stream)
{
    if (size == 0) {
        Free();
        return false;
    }
    std::uint32_t got = stream.Read(data, size);
    Resize(got);
    return got != 0;
}
