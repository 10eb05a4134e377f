#pragma once

#include "base/WideString.h"
#include "files/MemoryBytes.h"

#include <string>

// One source of the Python package: a file at a path, or a file's bytes
// held by the caller under a name shown as its path.
struct CheckSource {
    WideString path;
    bool inMemory = false;
    MemoryBytes bytes;
};

// What became of a source. The numbers are the package's too.
enum class SourceState {
    Done = 0,       // text: the JSON the checker prints for it
    Missing = 1,    // no file or folder at the path
    Folder = 2,     // a folder at the path
    Unreadable = 3, // a file that can't be opened for reading
    NotMeasured = 4, // levels only: text says why, as the checker's "error"
    Failed = 5,     // the check itself failed (no memory): text says how
};

struct SourceOutcome {
    SourceState state = SourceState::Failed;
    std::string text;
};

// The check of the source as `sondara-check --json` prints it: the array
// of its one file object. Runs on any thread, without Python.
SourceOutcome CheckSourceAsJson(const CheckSource& source);
// The levels as `sondara-check --levels --json [--loudness]` print them:
// the array of its one object.
SourceOutcome MeasureSourceAsJson(const CheckSource& source, bool loudness);
