#include "platform/Console.h"

#include <cerrno>
#include <unistd.h>

namespace platform {

const char* const kLineEnd = "\n";

namespace {

void WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace

void WriteToStandardOutput(std::string_view bytes)
{
    WriteAll(STDOUT_FILENO, bytes);
}

void WriteToStandardError(std::string_view bytes)
{
    WriteAll(STDERR_FILENO, bytes);
}

} // namespace platform
