#pragma once

#include "wave/BodyBytes.h"

#include <cstdint>
#include <vector>

// The points of a cue chunk: each with its id and its place in sample
// frames (the sample offset, which every writer sets).
struct CuePoint {
    std::uint32_t id;
    std::uint32_t position;      // the place in the play order
    std::uint32_t sampleOffset;  // the frame it marks
};

// As many points as the count says and the body holds.
std::vector<CuePoint> ReadCuePoints(BodySpan body);
