#pragma once

#include "cli/CheckPrinter.h"
#include "cli/FileSources.h"
#include "policy/Policy.h"

struct CheckRunOptions {
    OutputFormat format = OutputFormat::Text;
    // Files checked at once; 0 for one a core.
    unsigned jobs = 0;
    // Warnings make the exit status 1 too.
    bool strict = false;
    // Each file is held to it too: its audio read when a rule needs it.
    const Policy* policy = nullptr;
    // Each file's result goes out as soon as it is printed: for a person at
    // the terminal, and for a program that reads JSON Lines as they come.
    bool flushEachFile = false;
};

// Checks the paths of sources, several at once, as the sources find them,
// and prints each as soon as it and every path before it are done, in
// their order, then the summary. Only a window of paths and results ahead
// of the printer is held, so a run of any length needs the same memory.
// Gives the exit status: 0 when every report is clear (and, with strict,
// no file has a warning) and every file passes the policy, 1 otherwise.
int RunChecks(FileSources& sources, const CheckRunOptions& options, TextSink& sink);
