#pragma once

#include "base/WideString.h"
#include "measure/Loudness.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

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

// Reads every sample frame of the file's data chunk in aligned mode, past
// the system's cache, and measures each channel: 8, 16, 24 and 32-bit PCM
// and 32 and 64-bit float, plain or extensible, of any number of channels,
// full scale at the highest code or at ±1.0. Anything else, or a file
// without audio, gives false and a message for the user in problem.
// With loudness, the programme's loudness and each channel's true peak too;
// a rate too low for the K-weighting gives false. A read that fails, or a
// file that ends before the frames it held when measuring began, gives
// false: a measurement is of every frame or none. progress, when given,
// hears of the frames measured after each read.
using MeasureProgress = std::function<void(std::int64_t framesDone, std::int64_t frameCount)>;
bool MeasureLevels(const WideString& path, LevelReport& report, std::string& problem, bool loudness = false,
                   const MeasureProgress& progress = {});

// The samples of all channels that no figure could take in: a measured
// file with any is a finding.
std::uint64_t CountNonFinite(const LevelReport& report);

// The lowest sample rate whose loudness is measured.
constexpr std::uint32_t kLowestLoudnessRate = 8000;

// Decibels relative to full scale; silence is -inf.
double ToDecibels(double fraction);
