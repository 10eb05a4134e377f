#pragma once

#include "base/WideString.h"
#include "check/Finding.h"

#include <vector>

// What the check leaves unsaid of the file at path, as warnings: sizes left
// as placeholders by an unfinished recording, audio cut short, a RIFF size
// that disagrees with the file, bytes behind the RIFF chunk, an odd chunk
// without its pad byte, a second format chunk, a block align or byte rate
// against the format, an extensible format that is not PCM, a data size
// that ends inside a frame, and an RF64 file. Each is placed at the chunk it
// is about. Reads the headers only; false when the file can't be opened.
bool FindWarnings(const WideString& path, std::vector<Finding>& warnings);
