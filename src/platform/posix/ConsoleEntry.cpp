// The entry of the system's console programs on POSIX: arguments are bytes,
// read as paths are whatever the locale, since a name on POSIX is its bytes
// and must reach open() as it came. Options are ASCII and read the same.
#include "platform/Console.h"
#include "platform/posix/Utf8Path.h"

#include <cstring>

int main(int argc, char** argv)
{
    std::vector<std::u16string> arguments;
    for (int i = 1; i < argc; ++i)
        arguments.push_back(platform::posix::PathFromBytes(std::string_view(argv[i], std::strlen(argv[i]))));
    return ConsoleMain(arguments);
}
