#pragma once

#include "measure/CodeLanes.h"
#include "measure/VectorPath.h"

#include <cstdint>

// Each channel's range of code magnitudes, from low to high (|-32768| is
// 32768), for packed 16-bit frames; channels past the format's are unused.
struct MagnitudeRanges {
    std::uint16_t low[kCodeLanes] = {};
    std::uint16_t high[kCodeLanes] = {};
};

// The frames from data, of frames, before the first that holds a code
// whose magnitude lies outside its channel's range. A meter whose state
// stays the same through such frames (sound after sound, nothing at the
// peak) passes them by without looking at their samples one by one. The
// codes are compared kSpanSamples at a time in vector instructions the
// compiler makes of plain loops, wide ones on the wide path, and one at a
// time in the span that holds the first outside; a plain function, for any
// thread.
constexpr std::uint32_t kSpanSamples = 64;

std::uint32_t FramesInRanges(VectorPath path, const std::uint8_t* data, std::uint32_t frames,
                             std::uint32_t channels, const MagnitudeRanges& ranges);
