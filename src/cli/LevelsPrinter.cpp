#include "cli/LevelsPrinter.h"

#include "base/TextFormat.h"
#include "measure/Levels.h"

#include <cmath>
#include <cstdio>

namespace {

// A loudness with this many decimals, or -inf when there is none.
std::string Lufs(double loudness, int decimals)
{
    return std::isinf(loudness) ? "-inf" : FormatFixed(loudness, decimals);
}

std::string NullOr(double value, int decimals)
{
    return std::isinf(value) ? "null" : FormatFixed(value, decimals);
}

std::string Decibels(double fraction, const char* silent)
{
    const double db = ToDecibels(fraction);
    return std::isinf(db) ? silent : FormatFixed(db, 2);
}

} // namespace

// "duration 0:01.500 (66,150 frames at 44,100 Hz, 16-bit)", then a line
// for each channel; the count of samples left out only where there are
// any, so that the lines of every sound file stay as they were.
std::string FormatLevelsText(const LevelReport& report)
{
    const std::int64_t millis =
        report.sampleRate ? static_cast<std::int64_t>(std::llround(report.frames * 1000.0 / report.sampleRate)) : 0;
    char duration[48];
    const std::int64_t hours = millis / 3600000;
    if (hours > 0)
        std::snprintf(duration, sizeof duration, "%lld:%02d:%02d.%03d", static_cast<long long>(hours),
                      static_cast<int>(millis / 60000 % 60), static_cast<int>(millis / 1000 % 60),
                      static_cast<int>(millis % 1000));
    else
        std::snprintf(duration, sizeof duration, "%d:%02d.%03d", static_cast<int>(millis / 60000),
                      static_cast<int>(millis / 1000 % 60), static_cast<int>(millis % 1000));
    std::string text = "duration " + std::string(duration) + " (" + FormatCount(report.frames) + " frames at " +
                       FormatCount(report.sampleRate) + " Hz, " + std::to_string(report.bits) + "-bit" +
                       (report.isFloat ? " float" : "") + ")\n";
    for (std::size_t c = 0; c < report.channels.size(); ++c) {
        const ChannelLevels& levels = report.channels[c];
        text += "channel " + std::to_string(c + 1) + ": peak " + Decibels(levels.peak, "-inf") + " dBFS, RMS " +
                Decibels(levels.rms, "-inf") + " dBFS, DC offset " + FormatFixed(levels.dcOffset, 6) + ", " +
                FormatCount(static_cast<std::int64_t>(levels.fullScale)) + " samples at full scale" +
                (report.isFloat ? ", " + FormatCount(static_cast<std::int64_t>(levels.overFullScale)) + " over it" : "") +
                (levels.nonFinite ? ", " + FormatCount(static_cast<std::int64_t>(levels.nonFinite)) + " not finite, left out"
                                  : "") +
                "\n";
    }
    if (report.hasLoudness) {
        const LoudnessMeter::Figures& l = report.loudness;
        text += "loudness: integrated " + Lufs(l.integrated, 1) + " LUFS, range " + FormatFixed(l.range, 1) +
                " LU, momentary max " + Lufs(l.momentaryMax, 1) + " LUFS, short-term max " + Lufs(l.shortTermMax, 1) +
                " LUFS\n";
        for (std::size_t c = 0; c < l.truePeak.size(); ++c)
            text += "channel " + std::to_string(c + 1) + ": true peak " + Decibels(l.truePeak[c], "-inf") + " dBTP\n";
    }
    return text;
}

// Decibels with four decimals, so that a comparison at a hundredth of a
// decibel is not blurred by rounding.
std::string FormatLevelsJson(const LevelReport& report)
{
    auto decibels = [](double fraction) {
        const double db = ToDecibels(fraction);
        return std::isinf(db) ? std::string("null") : FormatFixed(db, 4);
    };
    std::string json = "\"frames\": " + std::to_string(report.frames) +
                       ", \"sampleRate\": " + std::to_string(report.sampleRate) +
                       ", \"bits\": " + std::to_string(report.bits) + (report.isFloat ? ", \"float\": true" : "") +
                       ", \"seconds\": " +
                       FormatFixed(report.sampleRate ? static_cast<double>(report.frames) / report.sampleRate : 0, 6) +
                       ", \"channels\": [";
    for (std::size_t c = 0; c < report.channels.size(); ++c) {
        const ChannelLevels& levels = report.channels[c];
        json += c ? ", " : "";
        json += "{\"peak\": " + decibels(levels.peak) + ", \"rms\": " + decibels(levels.rms) +
                ", \"dcOffset\": " + FormatFixed(levels.dcOffset, 6) +
                ", \"fullScale\": " + std::to_string(levels.fullScale) +
                (report.isFloat ? ", \"overFullScale\": " + std::to_string(levels.overFullScale) : "") +
                (levels.nonFinite ? ", \"nonFinite\": " + std::to_string(levels.nonFinite) : "") + "}";
    }
    json += "]";
    if (report.hasLoudness) {
        const LoudnessMeter::Figures& l = report.loudness;
        json += ", \"loudness\": {\"integrated\": " + NullOr(l.integrated, 2) + ", \"range\": " + FormatFixed(l.range, 2) +
                ", \"momentaryMax\": " + NullOr(l.momentaryMax, 2) + ", \"shortTermMax\": " + NullOr(l.shortTermMax, 2) +
                ", \"truePeak\": [";
        for (std::size_t c = 0; c < l.truePeak.size(); ++c)
            json += (c ? ", " : "") + decibels(l.truePeak[c]);
        json += "]}";
    }
    return json;
}
