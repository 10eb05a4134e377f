#pragma once

#include "base/WideString.h"

#include <string>
#include <vector>

// The cue points and sampler loops that a tidy copy keeps byte for byte
// but that now lie past the audio it keeps, the copy having cut an
// unfinished recording to its whole frames: one line of changes each. Reads
// the copy at path; a RIFF copy only.
void SayMarksPastAudio(const WideString& path, std::vector<std::string>& changes);
