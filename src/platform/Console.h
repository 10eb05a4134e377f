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

} // namespace platform

// Supplied by the console program; the platform's entry shim calls it with
// the arguments behind the program's name.
int ConsoleMain(const std::vector<std::u16string>& arguments);
