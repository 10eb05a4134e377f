#include "check/Levels.h"

#include "check/TextFormat.h"
#include "check/FileFacts.h"
#include "wave/DataChunk.h"
#include "wave/FormatChunk.h"
#include "wave/WaveDocument.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

constexpr char kOnlyPcm[] = ": levels are measured for 8, 16 and 24-bit PCM only";

// Sums of one channel, exact: the squares in 128 bits, as two halves.
struct ChannelSums {
    std::int64_t sum = 0;
    std::uint64_t squaresLow = 0;
    std::uint64_t squaresHigh = 0;
    std::int32_t lowest = std::numeric_limits<std::int32_t>::max();
    std::int32_t highest = std::numeric_limits<std::int32_t>::min();
    std::uint64_t fullScale = 0;

    void AddSquares(std::uint64_t squares)
    {
        squaresLow += squares;
        squaresHigh += squaresLow < squares;
    }
};

// A sample of this width: 8-bit samples are unsigned around 128, the wider
// ones signed.
template <int Bytes>
std::int32_t SampleAt(const std::uint8_t* bytes)
{
    if constexpr (Bytes == 1)
        return static_cast<std::int32_t>(bytes[0]) - 128;
    else if constexpr (Bytes == 2)
        return static_cast<std::int16_t>(bytes[0] | bytes[1] << 8);
    else
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(bytes[0] << 8 | bytes[1] << 16 | bytes[2] << 24)) >> 8;
}

// Adds one channel of frames to its sums. The squares of a run of 65536
// samples fit in 64 bits even at 24 bits (2^46 each), so the 128-bit sum
// is touched once a run, and the inner loop keeps everything in registers.
template <int Bytes>
void AddChannel(const std::uint8_t* data, std::uint32_t frames, std::uint32_t stride, ChannelSums& sums)
{
    constexpr std::int32_t kHighest = (1 << (Bytes * 8 - 1)) - 1;
    constexpr std::int32_t kLowest = -kHighest - 1;
    constexpr std::uint32_t kRun = 65536;
    std::int64_t sum = 0;
    std::int32_t lowest = sums.lowest, highest = sums.highest;
    std::uint64_t fullScale = 0;
    for (std::uint32_t start = 0; start < frames; start += kRun) {
        const std::uint32_t end = std::min(frames, start + kRun);
        std::uint64_t squares = 0;
        for (std::uint32_t frame = start; frame < end; ++frame) {
            const std::int32_t v = SampleAt<Bytes>(data + std::size_t{frame} * stride);
            sum += v;
            squares += static_cast<std::uint64_t>(static_cast<std::int64_t>(v) * v);
            lowest = std::min(lowest, v);
            highest = std::max(highest, v);
            fullScale += (v == kHighest) | (v == kLowest);
        }
        sums.AddSquares(squares);
    }
    sums.sum += sum;
    sums.lowest = lowest;
    sums.highest = highest;
    sums.fullScale += fullScale;
}

template <int Bytes>
void AddFrames(const std::uint8_t* data, std::uint32_t frames, std::uint32_t stride, std::vector<ChannelSums>& sums)
{
    for (std::size_t c = 0; c < sums.size(); ++c)
        AddChannel<Bytes>(data + c * Bytes, frames, stride, sums[c]);
}

bool Refuse(std::string& problem, const std::string& why)
{
    problem = why;
    return false;
}

std::string Decibels(double fraction, const char* silent)
{
    const double db = ToDecibels(fraction);
    return std::isinf(db) ? silent : FormatFixed(db, 2);
}

} // namespace

double ToDecibels(double fraction)
{
    return fraction > 0 ? 20 * std::log10(fraction) : -std::numeric_limits<double>::infinity();
}

bool MeasureLevels(const WideString& path, LevelReport& report, std::string& problem)
{
    report = LevelReport();
    if (!IsExistingFile(path))
        return Refuse(problem, "no such file");
    WaveDocument document;
    document.SetAlignedIo(true);
    document.SetTreeForm(TreeForm::SlotsOnly);
    document.Open(path);
    if (document.GetContainerKind() != kContainerRiff)
        return Refuse(problem, "not a RIFF file");
    const FormatChunk* formatChunk = document.GetFormatChunk();
    if (!formatChunk)
        return Refuse(problem, "no format chunk");
    const WaveFormat format = formatChunk->GetFormat();
    char detail[96];
    if (!formatChunk->IsPcm()) {
        std::snprintf(detail, sizeof detail, "format tag 0x%04X is not PCM", static_cast<unsigned>(format.formatTag));
        return Refuse(problem, detail + std::string(kOnlyPcm));
    }
    if (format.bitsPerSample != 8 && format.bitsPerSample != 16 && format.bitsPerSample != 24)
        return Refuse(problem, std::to_string(format.bitsPerSample) + "-bit samples" + kOnlyPcm);
    const std::uint32_t bytesPerSample = format.bitsPerSample / 8u;
    if (format.channels < 1 || format.channels > FrameBlock::kMostChannels)
        return Refuse(problem, std::to_string(format.channels) + " channels: levels are measured for 1 to 8 channels");
    if (format.blockAlign < format.channels * bytesPerSample)
        return Refuse(problem, "a frame of " + std::to_string(format.blockAlign) + " bytes can't hold " +
                                   std::to_string(format.channels) + " samples of " +
                                   std::to_string(format.bitsPerSample) + " bits");
    DataChunk* dataChunk = document.GetDataChunk();
    if (!dataChunk)
        return Refuse(problem, "no data chunk");

    std::vector<ChannelSums> sums(format.channels);
    FrameBlock block;
    std::int64_t first = 0;
    while (first < dataChunk->GetFrameCount()) {
        const auto wanted = static_cast<std::int32_t>(
            std::min<std::int64_t>(FrameBlock::kMostFrames, dataChunk->GetFrameCount() - first));
        if (!dataChunk->ReadFrames(dataChunk->GetFrameStream(), block, first, wanted))
            break;
        const std::uint32_t frames = block.GetFrameCount();
        switch (bytesPerSample) {
        case 1: AddFrames<1>(block.Data(), frames, format.blockAlign, sums); break;
        case 2: AddFrames<2>(block.Data(), frames, format.blockAlign, sums); break;
        default: AddFrames<3>(block.Data(), frames, format.blockAlign, sums); break;
        }
        first += frames;
        if (frames < static_cast<std::uint32_t>(wanted))
            break;
    }
    if (first == 0)
        return Refuse(problem, "no audio data");

    report.frames = first;
    report.sampleRate = format.samplesPerSec;
    report.bits = format.bitsPerSample;
    const double fullScale = std::ldexp(1.0, format.bitsPerSample - 1);
    const auto count = static_cast<double>(first);
    for (const ChannelSums& s : sums) {
        ChannelLevels levels;
        levels.peak = std::max(-static_cast<double>(s.lowest), static_cast<double>(s.highest)) / fullScale;
        const double squares = std::ldexp(static_cast<double>(s.squaresHigh), 64) + static_cast<double>(s.squaresLow);
        levels.rms = std::sqrt(squares / count) / fullScale;
        levels.dcOffset = static_cast<double>(s.sum) / count / fullScale;
        levels.fullScale = s.fullScale;
        report.channels.push_back(levels);
    }
    return true;
}

// "duration 0:01.500 (66,150 frames at 44,100 Hz, 16-bit)", then a line
// for each channel.
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
                       FormatCount(report.sampleRate) + " Hz, " + std::to_string(report.bits) + "-bit)\n";
    for (std::size_t c = 0; c < report.channels.size(); ++c) {
        const ChannelLevels& levels = report.channels[c];
        text += "channel " + std::to_string(c + 1) + ": peak " + Decibels(levels.peak, "-inf") + " dBFS, RMS " +
                Decibels(levels.rms, "-inf") + " dBFS, DC offset " + FormatFixed(levels.dcOffset, 6) + ", " +
                FormatCount(static_cast<std::int64_t>(levels.fullScale)) + " samples at full scale\n";
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
                       ", \"bits\": " + std::to_string(report.bits) + ", \"seconds\": " +
                       FormatFixed(report.sampleRate ? static_cast<double>(report.frames) / report.sampleRate : 0, 6) +
                       ", \"channels\": [";
    for (std::size_t c = 0; c < report.channels.size(); ++c) {
        const ChannelLevels& levels = report.channels[c];
        json += c ? ", " : "";
        json += "{\"peak\": " + decibels(levels.peak) + ", \"rms\": " + decibels(levels.rms) +
                ", \"dcOffset\": " + FormatFixed(levels.dcOffset, 6) +
                ", \"fullScale\": " + std::to_string(levels.fullScale) + "}";
    }
    return json + "]";
}
