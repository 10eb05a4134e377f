#pragma once

#include <cstdint>
#include <string_view>

// A modal message box owned by the desktop window, for threads that have no
// window of their own.
namespace platform {

// Box types, with the system's values.
constexpr std::uint32_t kMessageBoxOk = 0x00;
constexpr std::uint32_t kMessageBoxIconExclamation = 0x30;

// Button ids that close a box.
constexpr std::int32_t kMessageBoxIdOk = 1;

std::int32_t ShowDesktopMessageBox(std::u16string_view text, std::u16string_view caption, std::uint32_t type);

} // namespace platform
