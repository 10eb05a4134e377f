#pragma once

#include "base/WideString.h"

#include <chrono>
#include <cstdint>
#include <string>

// "measuring PATH: 42%" on standard error while a file's levels are
// measured, rewritten in place, once the file has taken a second and at
// most ten times a second after; only where a person watches the terminal.
// Fed by the measuring pass on the thread that measures; the line is
// cleared when the object goes, before the file's results are printed.
class MeasureProgressLine {
public:
    explicit MeasureProgressLine(const WideString& path);
    ~MeasureProgressLine();
    MeasureProgressLine(const MeasureProgressLine&) = delete;
    MeasureProgressLine& operator=(const MeasureProgressLine&) = delete;

    void Done(std::int64_t frames, std::int64_t total);

private:
    std::string name;
    bool shown;
    bool drawn = false;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point last;
};
