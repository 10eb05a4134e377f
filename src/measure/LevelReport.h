#pragma once

#include "measure/Loudness.h"

#include <cstdint>
#include <vector>

// What a measurement of a file's audio found: the records each meter fills
// in at the end of the pass.

// The levels of one channel, as fractions of full scale.
struct ChannelLevels {
    double peak = 0;      // the largest magnitude
    double rms = 0;       // root mean square
    double dcOffset = 0;  // mean
    std::uint64_t fullScale = 0; // samples at the highest or lowest code; for floats, at or beyond ±1.0
    std::uint64_t overFullScale = 0; // floats only: samples beyond ±1.0
    // Floats only: samples that are no level (NaN, infinite, or beyond
    // ±2^60), left out of every figure above and of the loudness.
    std::uint64_t nonFinite = 0;
};

struct LevelReport {
    std::int64_t frames = 0; // frames measured: all those present in the file
    std::uint32_t sampleRate = 0;
    std::uint16_t bits = 0;
    bool isFloat = false;
    std::vector<ChannelLevels> channels;
    bool hasLoudness = false;
    LoudnessMeter::Figures loudness{};
};
