#pragma once

#include <cstdint>

class FileStream;

// The system's growable byte buffer. Its owner keeps it by value; it is not
// copied. Memory comes zero-filled, and a size of 0 gives the memory back.
class ByteBlock {
public:
    ByteBlock() = default;
    ~ByteBlock();
    ByteBlock(const ByteBlock&) = delete;
    ByteBlock& operator=(const ByteBlock&) = delete;

    bool Resize(std::uint32_t newSize);
    bool ReadFrom(FileStream& stream);

    std::uint8_t* Data() { return data; }
    const std::uint8_t* Data() const { return data; }
    std::uint32_t Size() const { return size; }
    std::uint32_t Capacity() const { return capacity; }

private:
    bool Grow(std::uint32_t needed);
    void Free();

    std::uint8_t* data = nullptr;
    std::uint32_t size = 0;
    std::uint32_t capacity = 0;
    std::uint32_t growBy = 0;
};
