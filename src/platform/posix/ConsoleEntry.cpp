// The entry of the system's console programs on POSIX: arguments are bytes
// in the locale's character set.
#include "platform/Console.h"
#include "platform/TextCodec.h"

#include <cstring>

int main(int argc, char** argv)
{
    std::vector<std::u16string> arguments;
    for (int i = 1; i < argc; ++i)
        arguments.push_back(platform::ThreadBytesToWide(argv[i], std::strlen(argv[i])));
    return ConsoleMain(arguments);
}
