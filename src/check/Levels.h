#pragma once

#include "base/WideString.h"

#include <cstdint>
#include <string>
#include <vector>

// The levels of one channel, as fractions of full scale.
struct ChannelLevels {
    double peak = 0;      // the largest magnitude
    double rms = 0;       // root mean square
    double dcOffset = 0;  // mean
    std::uint64_t fullScale = 0; // samples at the highest or lowest code
};

struct LevelReport {
    std::int64_t frames = 0; // frames measured: those present in the file
    std::uint32_t sampleRate = 0;
    std::uint16_t bits = 0;
    std::vector<ChannelLevels> channels;
};

// Reads every sample frame of the file's data chunk in aligned mode, past
// the system's cache, and measures each channel. 8, 16 and 24-bit PCM of up
// to 8 channels; anything else, or a file without audio, gives false and a
// message for the user in problem.
bool MeasureLevels(const WideString& path, LevelReport& report, std::string& problem);

// Decibels relative to full scale, and the lines of a report: text ending
// in LF, or the members of a JSON object (decibels of silence as null).
double ToDecibels(double fraction);
std::string FormatLevelsText(const LevelReport& report);
std::string FormatLevelsJson(const LevelReport& report);
