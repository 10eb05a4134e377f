#pragma once

#include "base/WideString.h"
#include "check/CheckReport.h"
#include "check/Finding.h"

#include <vector>

// One file as the command-line checker sees it: the window's report, and
// the same as findings with codes and places, followed by the warnings of
// what the report leaves unsaid.
struct FileCheck {
    WideString path;
    CheckReport report;
    bool hasError = true;
    std::vector<Finding> findings;
    // An existing file that could not be opened: the report's words for it
    // would mislead ("not RIFF"), so the checker says why instead.
    bool unreadable = false;

    bool HasWarnings() const;
};

// Runs the window's check on path, unchanged, and then finds the warnings.
void CheckFile(const WideString& path, FileCheck& result);
