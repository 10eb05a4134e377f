#include "platform/Console.h"

#include "platform/TextCodec.h"

#include <cerrno>
#include <string>
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

// Lines are bytes in the locale's character set, as the arguments are.
bool ReadStandardInputLine(std::u16string& line)
{
    static std::string pending;
    static bool ended = false;
    for (;;) {
        const std::size_t end = pending.find('\n');
        if (end != std::string::npos || (ended && !pending.empty())) {
            std::string bytes = pending.substr(0, end);
            pending.erase(0, end == std::string::npos ? pending.size() : end + 1);
            if (!bytes.empty() && bytes.back() == '\r')
                bytes.pop_back();
            line = ThreadBytesToWide(bytes.data(), bytes.size());
            return true;
        }
        if (ended)
            return false;
        char buffer[65536];
        const ssize_t count = read(STDIN_FILENO, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            ended = true;
        else
            pending.append(buffer, static_cast<std::size_t>(count));
    }
}

bool IsStandardErrorTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

} // namespace platform
