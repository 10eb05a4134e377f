// The level meter fed its frames in parts, by itself and by a twin: what
// it gives on the whole, to the last bit where its sums are exact.
#include "measure/LevelMeter.h"
#include "measure/LevelReport.h"
#include "support/RiffBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

// The figures of a level meter fed these frames, in one go or cut at the
// cuts, every other part given to a twin.
std::vector<ChannelLevels> LevelsOf(const SampleFormat& format, const std::string& bytes, std::int64_t frames,
                                    const std::vector<std::uint32_t>& cuts)
{
    LevelMeter meter(format);
    const std::unique_ptr<Meter> twin = meter.MakeTwin();
    std::uint32_t first = 0;
    for (std::size_t i = 0; i <= cuts.size(); ++i) {
        const std::uint32_t last = i < cuts.size() ? cuts[i] : static_cast<std::uint32_t>(frames);
        Meter& part = i % 2 ? *twin : meter;
        part.AddBytes({reinterpret_cast<const std::uint8_t*>(bytes.data()) + std::size_t{first} * format.stride,
                       last - first, format.stride});
        first = last;
    }
    meter.Merge(*twin);
    LevelReport report;
    report.frames = frames;
    meter.Finish(report);
    return report.channels;
}

} // namespace

// Integers of up to 24 bits are summed exactly, however the frames come:
// packed frames of channels that divide the vector lanes, those that
// don't, frames with room to spare, runs longer than the 64-bit squares
// take; 32-bit integers and floats to the rounding of their sums. Random
// float bytes hold NaN, infinities and wild numbers, counted the same.
TEST(LevelMeter, FramesInPartsGiveWhatTheWholeGives)
{
    const struct {
        const char* name;
        std::uint16_t tag, channels, bits, align;
        bool exact;
    } cases[] = {
        {"8-bit mono", 1, 1, 8, 1, true},          {"16-bit stereo", 1, 2, 16, 4, true},
        {"16-bit, 3 channels", 1, 3, 16, 6, true}, {"16-bit stereo, 2 bytes spare", 1, 2, 16, 6, true},
        {"24-bit, 8 channels", 1, 8, 24, 24, true}, {"32-bit stereo", 1, 2, 32, 8, false},
        {"32-bit float stereo", 3, 2, 32, 8, false}, {"64-bit float mono", 3, 1, 64, 8, false},
    };
    std::mt19937 random(7);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SampleFormat format;
        std::string problem;
        const std::string body = FormatBodyAligned(c.tag, c.channels, 48000, c.bits, c.align);
        const auto* bodyBytes = reinterpret_cast<const std::uint8_t*>(body.data());
        ASSERT_TRUE(ReadSampleFormat(bodyBytes, 16, format, problem)) << problem;
        // More than one run of 65,536 lanes' blocks even for mono.
        const std::int64_t frames = 600000 / c.channels + 5;
        std::string bytes(std::size_t(frames) * c.align, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random());
        // Silence and full scale at the cuts' edges.
        std::memset(bytes.data() + 17 * c.align, 0x7f, 3 * c.align);
        const std::vector<ChannelLevels> whole = LevelsOf(format, bytes, frames, {});
        const auto half = static_cast<std::uint32_t>(frames / 2);
        const std::vector<std::uint32_t> cutsOfEachRun[] = {{1}, {1, 2, 19, 4097}, {9, half + 1, half + 2}};
        for (const std::vector<std::uint32_t>& cuts : cutsOfEachRun) {
            SCOPED_TRACE(cuts.back());
            const std::vector<ChannelLevels> parts = LevelsOf(format, bytes, frames, cuts);
            ASSERT_EQ(parts.size(), whole.size());
            for (std::size_t ch = 0; ch < whole.size(); ++ch) {
                const ChannelLevels &got = parts[ch], &expected = whole[ch];
                EXPECT_EQ(got.peak, expected.peak);
                EXPECT_EQ(got.fullScale, expected.fullScale);
                EXPECT_EQ(got.overFullScale, expected.overFullScale);
                EXPECT_EQ(got.nonFinite, expected.nonFinite);
                if (c.exact) {
                    EXPECT_EQ(got.rms, expected.rms);
                    EXPECT_EQ(got.dcOffset, expected.dcOffset);
                } else {
                    EXPECT_NEAR(got.rms, expected.rms, 1e-12 * expected.rms);
                    EXPECT_NEAR(got.dcOffset, expected.dcOffset, 1e-9 * std::max(1.0, std::fabs(expected.dcOffset)));
                }
            }
        }
    }
}
