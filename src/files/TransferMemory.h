#pragma once

#include <cstddef>
#include <cstdint>

// Memory that unbuffered transfers may go to and from: aligned to a page,
// zero-filled, freed with its owner. Data is null when there was none.
class TransferMemory {
public:
    explicit TransferMemory(std::size_t size);
    ~TransferMemory();
    TransferMemory(const TransferMemory&) = delete;
    TransferMemory& operator=(const TransferMemory&) = delete;

    std::uint8_t* Data() const { return memory; }
    std::size_t Size() const { return size; }

private:
    std::uint8_t* memory;
    std::size_t size;
};
