#pragma once

#include "base/WideString.h"
#include "check/CheckReport.h"

#include <string>
#include <vector>

// The command-line checker beside the window, for batches and scripts:
//   sondara-check [--json] FILE...
// It runs the window's check on each file in order. Exit status 0 when every
// report is the all-clear line, 1 when any has a finding, 2 for bad usage.

struct CheckResult {
    WideString path;
    CheckReport report;
    bool hasError;
};

// The results as one JSON array, ASCII only: every other character as the
// \u escape of its UTF-16 unit. The text ends in LF on every platform, so
// that all builds give the same bytes.
std::string FormatJson(const std::vector<CheckResult>& results);
// The reports as UTF-8 with the given line end; with several files each is
// headed by "== PATH".
std::string FormatText(const std::vector<CheckResult>& results, const char* lineEnd);
