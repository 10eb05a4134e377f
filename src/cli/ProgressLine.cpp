#include "cli/ProgressLine.h"

#include "platform/Console.h"

ProgressLine::ProgressLine() : shown(platform::IsStandardErrorTerminal()) {}

ProgressLine::~ProgressLine()
{
    Hide();
}

void ProgressLine::Hide()
{
    if (!drawn)
        return;
    platform::WriteToStandardError("\r\x1b[K");
    drawn = false;
    hidden = true;
}

bool ProgressLine::Due() const
{
    const auto now = std::chrono::steady_clock::now();
    return hidden || (now - start >= std::chrono::seconds(1) && now - last >= std::chrono::milliseconds(100));
}

void ProgressLine::Draw(const std::string& text)
{
    last = std::chrono::steady_clock::now();
    drawn = true;
    hidden = false;
    platform::WriteToStandardError("\r" + text);
}
