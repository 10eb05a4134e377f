#pragma once

#include "base/WideString.h"

#include <string>
#include <vector>

// One path of a run: a file to check, or a path that can't be checked at
// all, with the code of why (a folder that can't be read, a link loop, a
// link to nothing).
struct SourcePath {
    WideString path;
    std::string unreadable;
};

struct SourceOptions {
    // Standard input holds paths each ended by a zero byte (find -print0)
    // rather than by a line end.
    bool nulSeparated = false;
};

// The paths that the FILE arguments of the checker name, in order:
//   - a folder: every file below it whose name ends in ".wav" in any case,
//     walked depth first, the entries of each folder in the order of their
//     names' UTF-16 units, so that every run and every build lists the same
//     files in the same order;
//   - "-": the paths on standard input, one a line (empty lines skipped;
//     a byte order mark before the first is no part of it);
//   - a pattern with * or ? on a system whose shell leaves those to the
//     program (Windows), the paths that match, sorted likewise;
//   - anything else: the path itself, whatever it names.
// A folder's path is continued with the separator it is written in, the
// system's own when it has none.
// A folder or standard input that yields no path at all, and standard input
// that fails before its end, is said in nothingFound, a line each, so that a
// run over nothing never looks like a run over sound files.
void ExpandSources(const std::vector<WideString>& arguments, const SourceOptions& options,
                   std::vector<SourcePath>& paths, std::vector<std::string>& nothingFound);
