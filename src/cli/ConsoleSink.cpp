#include "cli/ConsoleSink.h"

#include "platform/Console.h"

#include <cstdlib>

std::string WithLineEnd(std::string_view text, const char* lineEnd)
{
    if (std::string_view(lineEnd) == "\n")
        return std::string(text);
    std::string converted;
    converted.reserve(text.size() + text.size() / 8);
    for (char c : text) {
        if (c == '\n')
            converted += lineEnd;
        else
            converted += c;
    }
    return converted;
}

void ConsoleSink::Put(std::string_view text)
{
    if (bytes == Bytes::Text)
        pending += WithLineEnd(text, platform::kLineEnd);
    else
        pending += text;
    if (pending.size() >= 64 * 1024)
        Flush();
}

void ConsoleSink::Flush()
{
    if (pending.empty())
        return;
    WriteWholeToStandardOutput(pending);
    pending.clear();
}

void WriteWholeToStandardOutput(std::string_view bytes)
{
    std::string failure;
    if (platform::WriteToStandardOutput(bytes, failure))
        return;
    if (!failure.empty())
        platform::WriteToStandardError(WithLineEnd("sondara-check: standard output can't be written: " + failure + "\n",
                                                   platform::kLineEnd));
    // Threads may still be checking; nothing of theirs is worth waiting for.
    std::_Exit(1);
}
