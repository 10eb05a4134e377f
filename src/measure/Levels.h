#pragma once

#include "measure/LevelReport.h"
#include "measure/MeasurePass.h"
#include "wave/FileLayout.h"

#include <cstdint>
#include <string>

class AudioMd5;

// What the levels read of a file before its audio: the registry alone, and
// an RF64 file's layout where the walk found no RIFF.
constexpr LayoutReading kLevelsReading{TreeForm::SlotsOnly, Rf64Reading::AfterWalk};

// Finds the audio through the file's layout, then reads every sample frame
// of its data chunk in aligned mode, past the system's cache, and measures
// each channel: 8, 16, 24 and 32-bit PCM
// and 32 and 64-bit float, plain or extensible, of any number of channels,
// full scale at the highest code or at ±1.0. Anything else, or a file
// without audio, gives false and a message for the user in problem.
// With loudness, the programme's loudness and each channel's true peak too;
// a rate too low for the K-weighting gives false. A read that fails, or a
// file that ends before the frames it held when measuring began, gives
// false: a measurement is of every frame or none. progress, when given,
// hears of the frames measured after each read. Every measurement also
// finds each channel's silence, clipping runs and noise floor and each
// stereo pair's correlation, as settings asks. md5, when given, hashes the
// audio in the same pass.
bool MeasureLevels(FileLayout& layout, LevelReport& report, std::string& problem, bool loudness = false,
                   const MeasureProgress& progress = {},
                   const MeterSettings& settings = {}, AudioMd5* md5 = nullptr);

// The samples of all channels that no figure could take in: a measured
// file with any is a finding.
std::uint64_t CountNonFinite(const LevelReport& report);

// The lowest sample rate whose loudness is measured.
constexpr std::uint32_t kLowestLoudnessRate = 8000;

// Decibels relative to full scale; silence is -inf.
double ToDecibels(double fraction);
