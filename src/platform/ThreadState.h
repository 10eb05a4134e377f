#pragma once

#include <cstdint>

// What the system keeps for each thread that the logic needs: its id and its
// last error code.
namespace platform {

// Unique among the threads that run at the same time; never 0.
using ThreadId = std::uint32_t;

ThreadId CurrentThreadId();
void SetLastErrorCode(std::uint32_t code);
std::uint32_t GetLastErrorCode();

} // namespace platform
