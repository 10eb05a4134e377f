// The levels and the loudness on arbitrary bytes, read from a file as the
// checker reads them: any format the meters take, floats with NaN and
// infinities among them, RIFF and RF64. A measurement holds no more frames
// than the file, counts no more samples apart than it measured, and has
// finite figures, or none (-inf) only where there is silence; the meters
// beyond the levels give figures inside what the file holds; its lines
// print. A refusal says why. The MD5 of the audio, beside the levels and
// alone, is one and the same, of no more bytes than the file holds (the
// one beside the levels read from the bytes in memory, the other from the
// file), and a stored MD5 chunk is read only when it is 16 bytes.
#include "cli/LevelsPrinter.h"
#include "measure/AudioMd5.h"
#include "measure/Levels.h"
#include "wave/Md5Chunk.h"

#include "FuzzInput.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

namespace {

bool IsFiniteOrNone(double figure)
{
    return std::isfinite(figure) || figure == -INFINITY;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string input = ScratchPath(".wav");
    WriteScratch(input, data, size);

    {
        Md5ChunkFinder finder;
        FileLayout alone(WideString::FromAscii(input), kLevelsReading, &finder);
        AudioMd5 md5, beside;
        std::string why;
        const bool hashed = HashAudio(alone, md5, why);
        if (hashed != why.empty() || (hashed && md5.Hashed() > static_cast<std::int64_t>(size)))
            FailInvariant("an MD5 of more than the file, or a refusal without a reason");
        const StoredMd5 stored = FindStoredMd5(alone, finder);
        if (stored.read && stored.size != kMd5ChunkBytes)
            FailInvariant("a stored MD5 read from a chunk of another size");
        FileLayout again(MemoryBytes{data, size}, WideString(u"held"), kLevelsReading);
        LevelReport levels;
        if (MeasureLevels(again, levels, why, false, {}, {}, &beside) && beside.IsComputed() &&
            (!hashed || beside.GetDigest() != md5.GetDigest()))
            FailInvariant("the MD5 beside the levels is not the MD5 alone");
    }

    FileLayout layout(WideString::FromAscii(input), kLevelsReading);
    LevelReport report;
    std::string problem;
    if (!MeasureLevels(layout, report, problem, true)) {
        if (problem.empty())
            FailInvariant("a refusal without a reason");
        return 0;
    }
    const std::uint64_t channels = report.channels.size();
    const std::uint64_t sampleBytes = report.bits / 8u;
    if (channels == 0 || report.frames <= 0)
        FailInvariant("a measurement of nothing");
    if (static_cast<std::uint64_t>(report.frames) * channels * sampleBytes > size)
        FailInvariant("more frames measured than the file holds");
    if (CountNonFinite(report) > static_cast<std::uint64_t>(report.frames) * channels)
        FailInvariant("more samples left out than measured");
    for (const ChannelLevels& levels : report.channels) {
        if (!std::isfinite(levels.peak) || !std::isfinite(levels.rms) || !std::isfinite(levels.dcOffset) ||
            levels.peak < 0 || levels.rms < 0)
            FailInvariant("a level that is not a finite figure");
        if (levels.nonFinite > static_cast<std::uint64_t>(report.frames) || (!report.isFloat && levels.nonFinite > 0))
            FailInvariant("a channel's count of samples left out is wrong");
        if (levels.rms > levels.peak * (1 + 1e-9) + 1e-300)
            FailInvariant("an RMS above the peak");
    }
    // The meters beyond the levels: a figure for each channel and pair,
    // inside what the file holds.
    if (report.silence.size() != channels || report.clippingRuns.size() != channels ||
        report.noiseFloor.size() != channels || report.pairs.size() != channels / 2)
        FailInvariant("a meter's figures missing");
    for (std::size_t c = 0; c < channels; ++c) {
        const ChannelSilence& silence = report.silence[c];
        if (silence.lead > report.frames || silence.tail > report.frames || silence.longestInside > report.frames ||
            silence.runStarts.size() > silence.runs || (silence.digitalZero && silence.lead != report.frames))
            FailInvariant("silence beyond the frames, or digital zero that is not silent");
        if (report.clippingRuns[c].longest > static_cast<std::uint64_t>(report.frames))
            FailInvariant("a clipping run longer than the file");
        const std::optional<double>& floor = report.noiseFloor[c];
        if (floor && !(*floor >= 0 && *floor <= report.channels[c].peak * (1 + 1e-9)))
            FailInvariant("a noise floor above the peak");
    }
    for (const PairFigures& pair : report.pairs) {
        for (const std::optional<double>& figure : {pair.correlation, pair.lowestBlock}) {
            if (figure && !(*figure >= -1 && *figure <= 1))
                FailInvariant("a correlation beyond -1 to 1");
        }
    }
    if (!report.hasLoudness || report.loudness.truePeak.size() != channels)
        FailInvariant("loudness asked for and not given");
    const LoudnessMeter::Figures& loudness = report.loudness;
    if (!IsFiniteOrNone(loudness.integrated) || !std::isfinite(loudness.range) ||
        !IsFiniteOrNone(loudness.momentaryMax) || !IsFiniteOrNone(loudness.shortTermMax))
        FailInvariant("a loudness that is neither a figure nor none");
    bool silent = true;
    for (std::size_t c = 0; c < channels; ++c) {
        const double truePeak = loudness.truePeak[c];
        if (!std::isfinite(truePeak) || truePeak < 0)
            FailInvariant("a true peak that is not a finite figure");
        // Silence between samples needs silent samples. The true-peak
        // filter compares squares as floats, which reach 0 below about
        // 1e-22 (-440 dBFS): samples under that are silence to it.
        if (truePeak == 0 && report.channels[c].peak >= 1e-20)
            FailInvariant("no true peak in a channel with samples");
        silent = silent && report.channels[c].peak == 0;
    }
    if (silent && std::isfinite(loudness.integrated))
        FailInvariant("a loudness of silence");
    // The lines print: a figure the formatting can't take would stop here.
    if (FormatLevelsText(report).find("nan") != std::string::npos ||
        FormatLevelsJson(report).find("nan") != std::string::npos)
        FailInvariant("a figure printed as nan");
    return 0;
}
