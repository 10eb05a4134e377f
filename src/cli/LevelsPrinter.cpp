#include "cli/LevelsPrinter.h"

#include "base/TextFormat.h"
#include "cli/CheckPrinter.h"
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

// How the noise floor is measured, in the words of the output.
constexpr char kNoiseFloorMethod[] = "quietest 0.5 s window RMS, a window every 0.1 s";

std::string Seconds(std::int64_t frames, std::uint32_t rate, int decimals)
{
    return FormatFixed(rate ? static_cast<double>(frames) / rate : 0, decimals);
}

std::string Correlation(const std::optional<double>& correlation, int decimals)
{
    return correlation ? FormatFixed(*correlation, decimals) : "none";
}

// The lines of the meters beyond the levels, each only where it was
// measured: silence, clipping runs and noise floor of each channel, then
// each stereo pair.
std::string MeterLinesText(const LevelReport& report)
{
    const MeterSettings& settings = report.settings;
    const std::uint32_t rate = report.sampleRate;
    std::string text;
    for (std::size_t c = 0; c < report.silence.size(); ++c) {
        const ChannelSilence& s = report.silence[c];
        text += "channel " + std::to_string(c + 1) + ": silence below " + FormatFixed(settings.silenceThresholdDb, 1) +
                " dBFS: lead " + Seconds(s.lead, rate, 3) + " s, tail " + Seconds(s.tail, rate, 3) +
                " s, longest inside " + Seconds(s.longestInside, rate, 3) + " s, " +
                FormatCount(static_cast<std::int64_t>(s.runs)) + " silent runs inside of " +
                FormatFixed(settings.silenceMinimumMs / 1000, 3) + " s or more" +
                (s.digitalZero ? ", digital zero throughout" : "") + "\n";
    }
    for (std::size_t c = 0; c < report.clippingRuns.size(); ++c) {
        const ClippingRuns& runs = report.clippingRuns[c];
        text += "channel " + std::to_string(c + 1) + ": " + FormatCount(static_cast<std::int64_t>(runs.runs)) +
                " runs of " + std::to_string(settings.clippingRun) + " or more equal samples at the peak, longest " +
                FormatCount(static_cast<std::int64_t>(runs.longest)) + "\n";
    }
    for (std::size_t c = 0; c < report.noiseFloor.size(); ++c) {
        const std::optional<double>& floor = report.noiseFloor[c];
        text += "channel " + std::to_string(c + 1) + ": noise floor " +
                (floor ? Decibels(*floor, "-inf") + " dBFS" : std::string("none")) + " (" + kNoiseFloorMethod + ")\n";
    }
    for (const PairFigures& pair : report.pairs) {
        text += "channels " + std::to_string(pair.first + 1) + "-" + std::to_string(pair.first + 2) + ": correlation " +
                Correlation(pair.correlation, 3) + ", lowest over 0.4 s blocks " + Correlation(pair.lowestBlock, 3) +
                (pair.identical ? ", dual mono" : "") + (pair.inverse ? ", one the inverse of the other" : "") + "\n";
    }
    return text;
}

// The members of a channel's object for the meters beyond the levels.
std::string MeterMembersJson(const LevelReport& report, std::size_t c)
{
    const std::uint32_t rate = report.sampleRate;
    std::string json;
    if (c < report.silence.size()) {
        const ChannelSilence& s = report.silence[c];
        json += ", \"silence\": {\"lead\": " + Seconds(s.lead, rate, 6) + ", \"tail\": " + Seconds(s.tail, rate, 6) +
                ", \"longestInside\": " + Seconds(s.longestInside, rate, 6) + ", \"runs\": " + std::to_string(s.runs) +
                ", \"runStarts\": [";
        for (std::size_t r = 0; r < s.runStarts.size(); ++r)
            json += (r ? ", " : "") + Seconds(s.runStarts[r], rate, 6);
        json += std::string("], \"digitalZero\": ") + (s.digitalZero ? "true" : "false") + "}";
    }
    if (c < report.clippingRuns.size())
        json += ", \"clippingRuns\": {\"runs\": " + std::to_string(report.clippingRuns[c].runs) +
                ", \"longest\": " + std::to_string(report.clippingRuns[c].longest) + "}";
    if (c < report.noiseFloor.size()) {
        const std::optional<double>& floor = report.noiseFloor[c];
        json += ", \"noiseFloor\": " + (floor ? NullOr(ToDecibels(*floor), 4) : std::string("null"));
    }
    return json;
}

// The settings the meters ran with and the stereo pairs, behind the channels.
std::string MeterReportJson(const LevelReport& report)
{
    if (report.silence.empty())
        return "";
    const MeterSettings& settings = report.settings;
    std::string json = ", \"silenceThreshold\": " + FormatFixed(settings.silenceThresholdDb, 2) +
                       ", \"silenceMinimum\": " + FormatFixed(settings.silenceMinimumMs / 1000, 6) +
                       ", \"clippingRun\": " + std::to_string(settings.clippingRun) +
                       ", \"noiseFloorMethod\": \"" + kNoiseFloorMethod + "\", \"pairs\": [";
    for (std::size_t p = 0; p < report.pairs.size(); ++p) {
        const PairFigures& pair = report.pairs[p];
        auto figure = [](const std::optional<double>& value) { return value ? FormatFixed(*value, 6) : "null"; };
        json += (p ? ", " : "") + std::string("{\"channels\": [") + std::to_string(pair.first + 1) + ", " +
                std::to_string(pair.first + 2) + "], \"correlation\": " + figure(pair.correlation) +
                ", \"lowestBlockCorrelation\": " + figure(pair.lowestBlock) +
                ", \"dualMono\": " + (pair.identical ? "true" : "false") +
                ", \"inverse\": " + (pair.inverse ? "true" : "false") + "}";
    }
    return json + "]";
}

} // namespace

// "duration 0:01.500 (66,150 frames at 44,100 Hz, 16-bit)", then a line
// for each channel; the count of samples left out only where there are
// any, so that the lines of every sound file stay as they were.
std::string FormatLevelsText(const LevelReport& report, const std::vector<Finding>& warnings)
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
    text += MeterLinesText(report);
    if (report.hasLoudness) {
        const LoudnessMeter::Figures& l = report.loudness;
        text += "loudness: integrated " + Lufs(l.integrated, 1) + " LUFS, range " + FormatFixed(l.range, 1) +
                " LU, momentary max " + Lufs(l.momentaryMax, 1) + " LUFS, short-term max " + Lufs(l.shortTermMax, 1) +
                " LUFS\n";
        for (std::size_t c = 0; c < l.truePeak.size(); ++c)
            text += "channel " + std::to_string(c + 1) + ": true peak " + Decibels(l.truePeak[c], "-inf") + " dBTP\n";
    }
    for (const Finding& warning : warnings)
        text += WarningLine(warning);
    return text;
}

// Decibels with four decimals, so that a comparison at a hundredth of a
// decibel is not blurred by rounding.
std::string FormatLevelsJson(const LevelReport& report, const std::vector<Finding>& warnings)
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
                (levels.nonFinite ? ", \"nonFinite\": " + std::to_string(levels.nonFinite) : "") +
                MeterMembersJson(report, c) + "}";
    }
    json += "]" + MeterReportJson(report);
    if (report.hasLoudness) {
        const LoudnessMeter::Figures& l = report.loudness;
        json += ", \"loudness\": {\"integrated\": " + NullOr(l.integrated, 2) + ", \"range\": " + FormatFixed(l.range, 2) +
                ", \"momentaryMax\": " + NullOr(l.momentaryMax, 2) + ", \"shortTermMax\": " + NullOr(l.shortTermMax, 2) +
                ", \"truePeak\": [";
        for (std::size_t c = 0; c < l.truePeak.size(); ++c)
            json += (c ? ", " : "") + decibels(l.truePeak[c]);
        json += "]}";
    }
    if (!report.silence.empty()) {
        json += ", \"findings\": [";
        for (std::size_t w = 0; w < warnings.size(); ++w) {
            json += w ? ", " : "";
            AppendFindingJson(json, warnings[w]);
        }
        json += "]";
    }
    return json;
}
