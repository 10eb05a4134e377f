#pragma once

#include "base/WideString.h"
#include "check/Finding.h"

#include <cstdint>
#include <optional>
#include <vector>

// Where the chunks that the check looks at lie, as a walk of the file's
// top-level chunk headers finds them.
struct FileLayout {
    bool opened = false;
    std::optional<std::int64_t> formatOffset; // the first "fmt " in the RIFF chunk
    std::optional<std::int64_t> dataOffset;   // the first "data" in the RIFF chunk
};

// What the check leaves unsaid of the file at path, as warnings: sizes left
// as placeholders by an unfinished recording, audio cut short, a RIFF size
// that disagrees with the file, bytes behind the RIFF chunk, an odd chunk
// without its pad byte, a second format chunk, a block align or byte rate
// against the format, an extensible format that is not PCM, and an RF64
// file. Reads the headers only; false when the file can't be opened.
bool FindWarnings(const WideString& path, FileLayout& layout, std::vector<Finding>& warnings);
