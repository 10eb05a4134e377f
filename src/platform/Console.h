#pragma once

#include <string>
#include <string_view>
#include <vector>

// What a console program of the system needs: its arguments, and bytes
// written unchanged to its standard streams.
namespace platform {

// The line end of the platform's text files and consoles.
extern const char* const kLineEnd;

void WriteToStandardOutput(std::string_view bytes);
void WriteToStandardError(std::string_view bytes);
// The next line of standard input, without its line end, as text of the
// system's paths; false at the end of the input.
bool ReadStandardInputLine(std::u16string& line);
// True when standard error is a terminal that a person watches, rather than
// a pipe or a file.
bool IsStandardErrorTerminal();

} // namespace platform

// Supplied by the console program; the platform's entry shim calls it with
// the arguments behind the program's name.
int ConsoleMain(const std::vector<std::u16string>& arguments);
