#pragma once

#include "wave/BodyBytes.h"

#include <cstdint>
#include <vector>

// The sampler chunk (smpl): its header and its loops, each loop's start
// and end the first and last frame of the loop.
struct SamplerLoop {
    std::uint32_t cuePointId, type, start, end, fraction, playCount;
};

struct SamplerFields {
    std::uint32_t manufacturer = 0, product = 0, samplePeriod = 0, unityNote = 0, pitchFraction = 0,
                  smpteFormat = 0, smpteOffset = 0, loopCount = 0, samplerDataBytes = 0;
    // As many of the loops counted as the body holds.
    std::vector<SamplerLoop> loops;
};

constexpr std::size_t kSamplerHeaderBytes = 36;
constexpr std::size_t kSamplerLoopBytes = 24;

SamplerFields ReadSamplerFields(BodySpan body);
