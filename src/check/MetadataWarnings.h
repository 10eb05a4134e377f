#pragma once

#include "check/Finding.h"

#include <cstdint>
#include <vector>

class FileStream;

// What is wrong with the metadata chunks of the file that stream has open,
// fileSize bytes long, as warnings: bext text that is not ASCII, a bext
// date or time not in its form, version 2 loudness left all 0, a bext
// behind the audio; INFO text that fits no encoding; cue points and smpl
// loops past the audio, a loop that starts after it ends, a loop count
// against the chunk's size; a label for a cue point that doesn't exist; an
// iXML sample rate unlike the format's. Each is placed at the chunk it is
// about. Reads the headers and the metadata only, wherever the stream stands.
void FindMetadataWarnings(FileStream& stream, std::int64_t fileSize, std::vector<Finding>& warnings);
