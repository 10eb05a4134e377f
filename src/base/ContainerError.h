#pragma once

#include <cstdint>

// The one exception type of the shared containers and WideString: thrown by
// value, it carries a Windows-style result code.
struct ContainerError {
    std::uint32_t resultCode;
};

constexpr std::uint32_t kResultInvalidArgument = 0x80070057; // an index out of range
constexpr std::uint32_t kResultOutOfMemory = 0x8007000E;
constexpr std::uint32_t kResultSizeOverflow = 0x80070216;
constexpr std::uint32_t kResultUnspecified = 0x80004005;

[[noreturn]] void ThrowContainerError(std::uint32_t resultCode);
