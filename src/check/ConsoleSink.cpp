#include "check/ConsoleSink.h"

#include "platform/Console.h"

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
    platform::WriteToStandardOutput(pending);
    pending.clear();
}
