// The meters that keep all their work, fed their frames cut anywhere: what
// they give on the whole, to the last bit, since the pass cuts a file's
// frames where its reads end.
#include "measure/ClippingRunMeter.h"
#include "measure/CodeSpans.h"
#include "measure/NoiseFloorMeter.h"
#include "measure/SilenceMeter.h"
#include "measure/StereoPairMeter.h"
#include "support/RiffBytes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

std::string Exact(double value)
{
    char text[40];
    std::snprintf(text, sizeof text, "%a ", value);
    return text;
}

// Every figure of the four meters, doubles to the bit.
std::string Describe(const LevelReport& report)
{
    std::string text;
    for (const ChannelSilence& s : report.silence) {
        text += "silence " + std::to_string(s.lead) + " " + std::to_string(s.tail) + " " + std::to_string(s.longestInside) +
                " " + std::to_string(s.runs) + (s.digitalZero ? " zero" : "") + " starts";
        for (std::int64_t start : s.runStarts)
            text += " " + std::to_string(start);
        text += "\n";
    }
    for (const ClippingRuns& runs : report.clippingRuns)
        text += "clipping " + std::to_string(runs.runs) + " " + std::to_string(runs.longest) + "\n";
    for (const std::optional<double>& floor : report.noiseFloor)
        text += "floor " + (floor ? Exact(*floor) : "none") + "\n";
    for (const PairFigures& pair : report.pairs)
        text += "pair " + (pair.correlation ? Exact(*pair.correlation) : "none") +
                (pair.lowestBlock ? Exact(*pair.lowestBlock) : "none") + std::to_string(pair.identical) +
                std::to_string(pair.inverse) + "\n";
    return text;
}

std::string MeasureInParts(const SampleFormat& format, const std::string& bytes, std::uint32_t frames,
                           const std::vector<std::uint32_t>& cuts)
{
    MeterSettings settings;
    settings.silenceMinimumMs = 20;
    SilenceMeter silence(format, settings);
    ClippingRunMeter clipping(format, settings);
    NoiseFloorMeter noise(format);
    StereoPairMeter pairs(format);
    std::uint32_t first = 0;
    for (std::size_t i = 0; i <= cuts.size(); ++i) {
        const std::uint32_t last = i < cuts.size() ? cuts[i] : frames;
        const RawFrames part{reinterpret_cast<const std::uint8_t*>(bytes.data()) + std::size_t{first} * format.stride,
                             last - first, format.stride};
        for (Meter* meter : std::initializer_list<Meter*>{&silence, &clipping, &noise, &pairs})
            meter->AddBytes(part);
        first = last;
    }
    LevelReport report;
    report.frames = frames;
    for (Meter* meter : std::initializer_list<Meter*>{&silence, &clipping, &noise, &pairs})
        meter->Finish(report);
    return Describe(report);
}

} // namespace

// Random samples with stretches of zeros (silent runs, windows of digital
// silence) and of one repeated frame (runs at the peak, dual mono), in
// every kind, frames with room to spare among them; cut after one frame,
// at odd places, and just past a read's worth.
TEST(MeterCuts, FramesInPartsGiveWhatTheWholeGives)
{
    const struct {
        const char* name;
        std::uint16_t tag, channels, bits, align;
    } cases[] = {
        {"8-bit, 3 channels", 1, 3, 8, 3},      {"16-bit stereo", 1, 2, 16, 4},
        {"24-bit stereo, 2 bytes spare", 1, 2, 24, 8}, {"32-bit stereo", 1, 2, 32, 8},
        {"32-bit float, 4 channels", 3, 4, 32, 16}, {"64-bit float stereo", 3, 2, 64, 16},
    };
    std::mt19937 random(11);
    constexpr std::uint32_t kFrames = 20000; // 2.5 s at 8 kHz: several windows and blocks
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SampleFormat format;
        std::string problem;
        const std::string body = FormatBodyAligned(c.tag, c.channels, 8000, c.bits, c.align);
        ASSERT_TRUE(ReadSampleFormat(reinterpret_cast<const std::uint8_t*>(body.data()), 16, format, problem)) << problem;
        std::string bytes(std::size_t{kFrames} * c.align, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random() % 7 == 0 ? 0x7f : random());
        // Floats made from random bytes are mostly no level; keep them small.
        if (c.tag == 3) {
            for (std::size_t at = c.bits / 8 - 1; at < bytes.size(); at += c.bits / 8)
                bytes[at] = static_cast<char>(0x3f);
        }
        std::memset(bytes.data() + 3000 * c.align, 0, 2500 * c.align);
        std::memset(bytes.data() + 9000 * c.align, 0, 700 * c.align);
        for (std::uint32_t f = 12001; f < 12400; ++f)
            std::memcpy(bytes.data() + std::size_t{f} * c.align, bytes.data() + 12000 * c.align, c.align);
        const std::string whole = MeasureInParts(format, bytes, kFrames, {});
        for (const std::vector<std::uint32_t>& cuts : std::vector<std::vector<std::uint32_t>>{
                 {1}, {1, 2, 19, 4097, 12005}, {3001, 5499, 5500, 9999, 19999}}) {
            SCOPED_TRACE(cuts.back());
            EXPECT_EQ(MeasureInParts(format, bytes, kFrames, cuts), whole);
        }
    }
}

// Packed 16-bit frames whose channels divide eight are measured as integer
// codes, all channels at once; the same samples with two bytes to spare a
// frame go channel by channel as doubles. Both give the same figures to
// the bit: random samples among full-scale ones, dual mono, inverse, and
// a pair at -32768 that is no inverse, cut anywhere.
TEST(MeterCuts, PackedCodesGiveWhatSamplesWithRoomToSpareGive)
{
    std::mt19937 random(5);
    constexpr std::uint32_t kFrames = 20000;
    // Quiet: codes about the silence threshold's (33 at -60 dBFS) with a
    // rare peak, so that long spans pass by whole and end at one code.
    const auto kinds = {"random", "dual mono", "inverse", "both at -32768", "quiet"};
    for (const std::uint16_t channels : {1, 2, 4, 8}) {
        for (const std::string kind : kinds) {
            SCOPED_TRACE(std::to_string(channels) + " channels, " + kind);
            std::vector<std::int16_t> samples(std::size_t{kFrames} * channels);
            for (std::size_t i = 0; i < samples.size(); ++i) {
                const bool quiet = kind == std::string("quiet");
                const auto value = static_cast<std::int16_t>(
                    quiet ? (random() % 3000 == 0 ? -32768 + random() % 2 : static_cast<int>(random() % 2000 == 0 ? 0 : 33) *
                                                                                (random() % 2 ? 1 : -1) - static_cast<int>(random() % 200 == 0))
                    : random() % 5 == 0 ? 32767 - random() % 2 : random());
                samples[i] = i % 2 == 0 || kind == std::string("random") || quiet ? value
                             : kind == std::string("dual mono")         ? samples[i - 1]
                             : kind == std::string("inverse")           ? static_cast<std::int16_t>(-samples[i - 1])
                                                                        : std::int16_t{-32768};
                if (kind == std::string("both at -32768") && i % 2 == 0)
                    samples[i] = -32768;
                if (kind == std::string("inverse") && samples[i] == -32768)
                    samples[i] = 0;
            }
            // Zeros from frame 3025, where a span of the part from the cut at 17
            // can end: a silent run starts right after sound passed by whole.
            std::fill_n(samples.begin() + 3025 * channels, 2500 * channels, 0);
            std::string results[2];
            for (const std::uint16_t spare : {0, 2}) {
                const auto align = static_cast<std::uint16_t>(2 * channels + spare);
                SampleFormat format;
                std::string problem;
                const std::string body = FormatBodyAligned(1, channels, 8000, 16, align);
                ASSERT_TRUE(ReadSampleFormat(reinterpret_cast<const std::uint8_t*>(body.data()), 16, format, problem));
                std::string bytes(std::size_t{kFrames} * align, '\0');
                for (std::uint32_t f = 0; f < kFrames; ++f)
                    std::memcpy(bytes.data() + std::size_t{f} * align, samples.data() + std::size_t{f} * channels, 2 * channels);
                results[spare / 2] = MeasureInParts(format, bytes, kFrames, {1, 17, 4097, 12005});
            }
            EXPECT_EQ(results[0], results[1]);
        }
    }
}

// Both paths pass by the frames a sample by sample look passes by, whatever
// the ranges: a code at either end of its range, or one past it, anywhere.
TEST(MeterCuts, FramesInRangesEndAtTheFirstCodeOutside)
{
    std::mt19937 random(7);
    for (const std::uint32_t channels : {1u, 2u, 4u, 8u}) {
        for (int round = 0; round < 200; ++round) {
            MagnitudeRanges ranges;
            for (std::uint32_t c = 0; c < channels; ++c) {
                ranges.low[c] = static_cast<std::uint16_t>(random() % 3 == 0 ? 0 : random() % 32769);
                ranges.high[c] = static_cast<std::uint16_t>(random() % 3 == 0 ? 32768 : ranges.low[c] + random() % (32769 - ranges.low[c]));
            }
            // Codes inside their ranges, at the ends most often, and one
            // outside somewhere, or none.
            std::vector<std::int16_t> codes(64 * 40 + 24);
            for (std::size_t i = 0; i < codes.size(); ++i) {
                const std::uint32_t c = i % channels, pick = random() % 3;
                const int magnitude = pick == 0 ? ranges.low[c] : pick == 1 ? ranges.high[c]
                                                  : ranges.low[c] + static_cast<int>(random() % (ranges.high[c] - ranges.low[c] + 1u));
                codes[i] = static_cast<std::int16_t>(magnitude == 32768 || random() % 2 ? -magnitude : magnitude);
            }
            const std::size_t outside = random() % (codes.size() + 1);
            if (outside < codes.size()) {
                const std::uint32_t c = outside % channels;
                if (ranges.low[c] > 0)
                    codes[outside] = static_cast<std::int16_t>(ranges.low[c] - 1);
                else if (ranges.high[c] < 32768)
                    codes[outside] = static_cast<std::int16_t>(-(ranges.high[c] + 1));
            }
            std::size_t first = 0;
            while (first < codes.size()) {
                const std::uint32_t c = first % channels;
                const int magnitude = codes[first] < 0 ? -codes[first] : codes[first];
                if (magnitude < ranges.low[c] || magnitude > ranges.high[c])
                    break;
                ++first;
            }
            const auto frames = static_cast<std::uint32_t>(codes.size() / channels);
            const auto expected = static_cast<std::uint32_t>(first / channels);
            for (const VectorPath path : {VectorPath::Plain, BestVectorPath()}) {
                SCOPED_TRACE(std::to_string(channels) + " channels, round " + std::to_string(round) + ", " + VectorPathName(path));
                EXPECT_EQ(FramesInRanges(path, reinterpret_cast<const std::uint8_t*>(codes.data()), frames, channels, ranges), expected);
            }
        }
    }
}
