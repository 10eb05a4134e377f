#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Text and numbers as the command-line checker prints them, the same bytes
// on every platform.

// A JSON string, ASCII only: every other character as the \u escape of its
// UTF-16 unit.
void AppendJsonString(std::string& out, std::u16string_view text);
// A CSV field, quoted, its quotes doubled. A spreadsheet takes a cell that
// begins with =, +, -, @, a tab or a carriage return for a formula, quotes
// or not, so such a field gets an apostrophe in front, which spreadsheets
// show as text and hide; the rest of the field stays as it was.
std::string CsvField(std::string_view text);
// A chunk's id as text: printable ASCII as it is, every other byte as
// \xNN. Every listing and message of the checker names chunks this way.
std::string ChunkIdText(std::uint32_t id);
// A whole number with a comma between groups of three digits: "1,234,556".
std::string FormatCount(std::int64_t value);
// A number with this many decimals, rounded half away from zero; the digits
// are worked out here rather than by the C library, whose rounding differs
// between platforms. Only finite numbers have digits: a caller that has a
// NaN or an infinity says what it means itself, and one that passes it
// anyway gets "nan", "inf" or "-inf", never a number.
std::string FormatFixed(double value, int decimals);
