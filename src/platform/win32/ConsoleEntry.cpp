// The entry of the system's console programs on Windows: wide arguments as
// the system hands them over.
#include "platform/Console.h"

#include <cwchar>

int wmain(int argc, wchar_t** argv)
{
    std::vector<std::u16string> arguments;
    for (int i = 1; i < argc; ++i)
        arguments.emplace_back(reinterpret_cast<const char16_t*>(argv[i]), std::wcslen(argv[i]));
    return ConsoleMain(arguments);
}
