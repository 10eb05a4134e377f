#pragma once

#include "measure/Loudness.h"
#include "measure/MeterSettings.h"

#include <cstdint>
#include <optional>
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

// The silence of one channel, in frames: a sample is silent below the
// threshold.
struct ChannelSilence {
    std::int64_t lead = 0;          // silent frames before the first sample that is not; all of them when none is
    std::int64_t tail = 0;          // silent frames after the last one that is not; likewise
    std::int64_t longestInside = 0; // the longest silent run between those two
    std::uint64_t runs = 0;         // silent runs between them that last at least the minimum
    std::vector<std::int64_t> runStarts; // the first frame of each such run, the first kMostRunStarts of them
    bool digitalZero = false;       // every sample exactly 0
};

// The runs of equal samples at a channel's own peak magnitude, either sign.
struct ClippingRuns {
    std::uint64_t runs = 0;    // runs of at least the settings' length
    std::uint64_t longest = 0; // the longest run at the peak, of any length; 0 for a channel of silence
};

// Channels 2k+1 and 2k+2, as a stereo pair.
struct PairFigures {
    std::uint32_t first = 0;                   // the index of the pair's first channel
    std::optional<double> correlation;         // over the whole file; none when a channel is silent
    std::optional<double> lowestBlock;         // the lowest over whole blocks of kPairBlockSeconds, likewise
    bool identical = false;                    // every sample equal to its partner: dual mono
    bool inverse = false;                      // every sample the negative of its partner, and not all zero
};

// The most start times of silent runs kept for a channel; the count goes on.
constexpr std::size_t kMostRunStarts = 1000;
// The noise floor: the RMS of the quietest window of this many steps.
constexpr double kNoiseStepSeconds = 0.1;
constexpr std::uint32_t kNoiseWindowSteps = 5;
// The blocks of a pair's lowest correlation.
constexpr double kPairBlockSeconds = 0.4;

struct LevelReport {
    std::int64_t frames = 0; // frames measured: all those present in the file
    std::uint32_t sampleRate = 0;
    std::uint16_t bits = 0;
    bool isFloat = false;
    std::vector<ChannelLevels> channels;
    bool hasLoudness = false;
    LoudnessMeter::Figures loudness{};
    // The figures of the meters that run with every measurement of levels,
    // each empty until its meter has finished, and the settings they ran with.
    MeterSettings settings;
    std::vector<ChannelSilence> silence;
    std::vector<ClippingRuns> clippingRuns;
    std::vector<std::optional<double>> noiseFloor; // RMS fractions; none when no window is there
    std::int64_t noiseWindowFrames = 0;
    std::int64_t noiseStepFrames = 0;
    std::vector<PairFigures> pairs;
};
