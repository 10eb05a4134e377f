#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What a console program of the system needs: its arguments, and bytes
// written unchanged to its standard streams.
namespace platform {

// The line end of the platform's text files and consoles.
extern const char* const kLineEnd;

// Writes every byte to standard output: UTF-8 text or exact bytes, as
// given; a console that takes characters rather than bytes gets them as
// characters. False when they could not all be written, with the system's
// reason in failure, which stays empty when the reader has gone (a pipe
// closed at its other end): tools end quietly then.
bool WriteToStandardOutput(std::string_view bytes, std::string& failure);
// Standard error takes what it can: nowhere is left to tell of a failure.
void WriteToStandardError(std::string_view bytes);
// One read of standard input: the bytes that came, 0 at its end, -1 on
// failure.
std::int64_t ReadFromStandardInput(void* destination, std::uint32_t count);
// A line of standard input as text, in the character set that programs
// which list paths write there: a path's own bytes on POSIX (each byte
// that isn't UTF-8 kept as a lone surrogate); UTF-8 on Windows, else the
// console's code page, or the OEM one without a console.
std::u16string StandardInputToWide(std::string_view bytes);
// True when standard error (output) is a terminal that a person watches,
// rather than a pipe or a file.
bool IsStandardErrorTerminal();
bool IsStandardOutputTerminal();

} // namespace platform

// Supplied by the console program; the platform's entry shim calls it with
// the arguments behind the program's name.
int ConsoleMain(const std::vector<std::u16string>& arguments);
