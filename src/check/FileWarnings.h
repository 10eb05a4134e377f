#pragma once

#include "check/Finding.h"

#include <cstdint>
#include <vector>

class FileStream;

// What the check leaves unsaid of the file that stream has open, fileSize
// bytes long, as warnings: sizes left as placeholders by an unfinished
// recording, audio cut short, a RIFF size that disagrees with the file,
// bytes behind the RIFF chunk, an odd chunk without its pad byte, a second
// format chunk, a block align or byte rate against the format, an
// extensible format that is not PCM, a data size that ends inside a frame,
// and an RF64 file. Each is placed at the chunk it is about. Reads the
// headers only, wherever the stream stands.
void FindWarnings(FileStream& stream, std::int64_t fileSize, std::vector<Finding>& warnings);
