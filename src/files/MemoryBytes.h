#pragma once

#include <cstddef>
#include <cstdint>

// A whole file's bytes held in memory by the caller, who keeps them alive
// and unchanged for as long as a stream or reader opened over them is open.
struct MemoryBytes {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};
