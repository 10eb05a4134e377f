#pragma once

#include <cstdint>
#include <string>

// The system's own description of an error code such as a thread's last
// error (ThreadState.h).
namespace platform {

std::u16string SystemErrorMessage(std::uint32_t code);

} // namespace platform
