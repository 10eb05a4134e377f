#pragma once

#include "base/WideString.h"
#include "check/CheckReport.h"
#include "check/Finding.h"
#include "wave/FileLayout.h"

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

// What the check reads of a file: the registry alone, so that a file of
// millions of chunks is checked in little memory; an RF64 file is named
// from its header.
constexpr LayoutReading kCheckReading{TreeForm::SlotsOnly, Rf64Reading::NameOnly};

// Runs the window's check on the file, unchanged, and then finds the
// warnings, both through the layout's one open of it.
void CheckFile(FileLayout& layout, FileCheck& result);
