#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Text and numbers as the command-line checker prints them, the same bytes
// on every platform.

// A JSON string, ASCII only: every other character as the \u escape of its
// UTF-16 unit.
void AppendJsonString(std::string& out, std::u16string_view text);
// A chunk's id as text: printable ASCII as it is, every other byte as
// \xNN. Every listing and message of the checker names chunks this way.
std::string ChunkIdText(std::uint32_t id);
// A whole number with a comma between groups of three digits: "1,234,556".
std::string FormatCount(std::int64_t value);
// A number with this many decimals, rounded half away from zero; the digits
// are worked out here rather than by the C library, whose rounding differs
// between platforms.
std::string FormatFixed(double value, int decimals);
