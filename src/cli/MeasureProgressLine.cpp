#include "cli/MeasureProgressLine.h"

#include "base/Utf8.h"
#include "platform/Console.h"

MeasureProgressLine::MeasureProgressLine(const WideString& path)
    : name(WideToUtf8(path.View())), shown(platform::IsStandardErrorTerminal())
{
}

MeasureProgressLine::~MeasureProgressLine()
{
    if (drawn)
        platform::WriteToStandardError("\r\x1b[K");
}

void MeasureProgressLine::Done(std::int64_t frames, std::int64_t total)
{
    if (!shown || total <= 0)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now - start < std::chrono::seconds(1) || now - last < std::chrono::milliseconds(100))
        return;
    last = now;
    drawn = true;
    platform::WriteToStandardError("\rmeasuring " + name + ": " + std::to_string(frames * 100 / total) + "%");
}
