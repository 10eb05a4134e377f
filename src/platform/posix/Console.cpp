#include "platform/Console.h"

#include "platform/posix/Utf8Path.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <unistd.h>

namespace platform {

const char* const kLineEnd = "\n";

namespace {

// The errno of the write that failed, 0 when every byte went.
int WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return errno;
        if (written == 0)
            return EIO;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

} // namespace

bool WriteToStandardOutput(std::string_view bytes, std::string& failure)
{
    const int error = WriteAll(STDOUT_FILENO, bytes);
    // EPIPE comes only where SIGPIPE is ignored; otherwise the signal has
    // already ended the program, as it ends every tool in a pipeline.
    failure = error == 0 || error == EPIPE ? "" : std::strerror(error);
    return error == 0;
}

void WriteToStandardError(std::string_view bytes)
{
    WriteAll(STDERR_FILENO, bytes);
}

std::int64_t ReadFromStandardInput(void* destination, std::uint32_t count)
{
    for (;;) {
        const ssize_t got = read(STDIN_FILENO, destination, count);
        if (got < 0 && errno == EINTR)
            continue;
        return got;
    }
}

// Lines of paths, read as the arguments are: their bytes, whatever the
// locale, so that each reaches open() as it came.
std::u16string StandardInputToWide(std::string_view bytes)
{
    return posix::PathFromBytes(bytes);
}

bool IsStandardErrorTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

bool IsStandardOutputTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

} // namespace platform
