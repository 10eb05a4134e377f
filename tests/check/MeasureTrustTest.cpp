#include "cli/LevelsPrinter.h"
#include "measure/Levels.h"
#include "support/CheckerProcess.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace {

// Two channels of sines, 0.5 and 0.25 of full scale, two seconds at 48 kHz.
template <typename Float>
std::vector<Float> TwoSines()
{
    std::vector<Float> samples;
    for (int i = 0; i < 96000; ++i) {
        samples.push_back(static_cast<Float>(0.5 * std::sin(2 * std::numbers::pi * 997 * i / 48000)));
        samples.push_back(static_cast<Float>(0.25 * std::sin(2 * std::numbers::pi * 440 * i / 48000 + 1)));
    }
    return samples;
}

LevelReport Measured(const WideString& path, bool loudness = true)
{
    FileLayout layout(path, kLevelsReading);
    LevelReport report;
    std::string problem;
    EXPECT_TRUE(MeasureLevels(layout, report, problem, loudness)) << problem;
    return report;
}

// The figures of two reports of the same channel, to the rounding of
// sums taken in another order.
void ExpectSameLevels(const ChannelLevels& got, const ChannelLevels& expected)
{
    EXPECT_DOUBLE_EQ(got.peak, expected.peak);
    EXPECT_NEAR(got.rms, expected.rms, 1e-12);
    EXPECT_NEAR(got.dcOffset, expected.dcOffset, 1e-12);
    EXPECT_EQ(got.fullScale, expected.fullScale);
    EXPECT_EQ(got.overFullScale, expected.overFullScale);
}

// A sample that is no level, put into the first channel in place of a
// sine's sample, is left out of every figure: the channel measures as the
// same file without that frame's sample would, counted apart; the other
// channel is untouched; the loudness stays that of the sines, and nothing
// printed is infinite or a wild number.
template <typename Float>
void CheckSampleLeftOut(TempDir& dir, Float bad, const char* name)
{
    SCOPED_TRACE(name);
    const std::vector<Float> clean = TwoSines<Float>();
    const std::size_t at = 2 * 12345; // first channel, frame 12,345
    std::vector<Float> spoilt = clean, without = clean;
    spoilt[at] = bad;
    // Without the bad sample's frame: its first channel holds just the
    // samples that the spoilt file's first channel keeps.
    without.erase(without.begin() + at, without.begin() + at + 2);
    const LevelReport report = Measured(dir.Write("spoilt.wav", FloatWave(spoilt, 2, 48000)));
    const LevelReport reference = Measured(dir.Write("clean.wav", FloatWave(clean, 2, 48000)));
    const LevelReport shorter = Measured(dir.Write("without.wav", FloatWave(without, 2, 48000)));
    ASSERT_EQ(report.channels.size(), 2u);
    EXPECT_EQ(report.frames, 96000);
    EXPECT_EQ(report.channels[0].nonFinite, 1u);
    EXPECT_EQ(report.channels[1].nonFinite, 0u);
    EXPECT_EQ(CountNonFinite(report), 1u);
    EXPECT_EQ(CountNonFinite(reference), 0u);
    // The first channel: the samples kept are those of the shorter file's
    // first channel and the one sample of the frame erased that was good.
    EXPECT_DOUBLE_EQ(report.channels[0].peak, shorter.channels[0].peak);
    EXPECT_NEAR(report.channels[0].rms, shorter.channels[0].rms, 1e-12);
    EXPECT_NEAR(report.channels[0].dcOffset, shorter.channels[0].dcOffset, 1e-12);
    ExpectSameLevels(report.channels[1], reference.channels[1]);
    ASSERT_TRUE(report.hasLoudness);
    EXPECT_NEAR(report.loudness.integrated, reference.loudness.integrated, 0.01);
    for (std::size_t c = 0; c < 2; ++c)
        EXPECT_NEAR(report.loudness.truePeak[c], reference.loudness.truePeak[c], 1e-3);
    const std::string text = FormatLevelsText(report);
    const std::string json = FormatLevelsJson(report);
    EXPECT_NE(text.find("channel 1: peak -6.02 dBFS"), std::string::npos) << text;
    EXPECT_NE(text.find(" over it, 1 not finite, left out\nchannel 2:"), std::string::npos) << text;
    // Two seconds have no short-term loudness; nothing else may be none.
    std::string rest = text;
    rest.erase(rest.find("short-term max -inf"), 19);
    EXPECT_EQ(rest.find("inf"), std::string::npos) << text;
    EXPECT_NE(json.find("\"overFullScale\": 0, \"nonFinite\": 1, \"silence\""), std::string::npos) << json;
    EXPECT_EQ(json.find("nan"), std::string::npos) << json;
    // A sound file prints no count at all, as it always printed.
    EXPECT_EQ(FormatLevelsText(reference).find("finite"), std::string::npos);
    EXPECT_EQ(FormatLevelsJson(reference).find("nonFinite"), std::string::npos);
}

} // namespace

TEST(MeasureTrust, SamplesThatAreNoLevelAreCountedAndLeftOut)
{
    TempDir dir;
    CheckSampleLeftOut<float>(dir, std::numeric_limits<float>::infinity(), "32-bit +inf");
    CheckSampleLeftOut<float>(dir, -std::numeric_limits<float>::infinity(), "32-bit -inf");
    CheckSampleLeftOut<float>(dir, std::numeric_limits<float>::quiet_NaN(), "32-bit NaN");
    CheckSampleLeftOut<double>(dir, std::numeric_limits<double>::quiet_NaN(), "64-bit NaN");
    CheckSampleLeftOut<double>(dir, std::numeric_limits<double>::infinity(), "64-bit +inf");
    // Beyond any level: its square would make the RMS infinite.
    CheckSampleLeftOut<double>(dir, 1e300, "64-bit 1e300");

    // A channel of nothing but such samples measures as silence with its
    // count, never as a figure of NaN.
    const std::vector<float> samples(4800, std::numeric_limits<float>::quiet_NaN());
    const LevelReport report = Measured(dir.Write("nan.wav", FloatWave(samples, 1, 48000)));
    ASSERT_EQ(report.channels.size(), 1u);
    EXPECT_EQ(report.channels[0].nonFinite, 4800u);
    EXPECT_EQ(report.channels[0].rms, 0);
    EXPECT_EQ(report.channels[0].dcOffset, 0);
    EXPECT_EQ(report.loudness.truePeak[0], 0);
    EXPECT_EQ(FormatLevelsText(report).find("nan"), std::string::npos);
}

// Loudness is measured from 8 kHz up: a rate of 0 or one too low for the
// K-weighting is refused with loudness, and measured without it.
TEST(MeasureTrust, LoudnessRefusedBelowItsLowestRate)
{
    TempDir dir;
    const struct {
        std::uint32_t rate;
        bool measured;
    } cases[] = {{0, false}, {1, false}, {3363, false}, {7999, false}, {8000, true}, {48000, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rate);
        FileLayout layout(dir.Write("rate.wav", FloatWave(std::vector<float>(16000, 0.25f), 1, c.rate)), kLevelsReading);
        LevelReport report;
        std::string problem;
        EXPECT_EQ(MeasureLevels(layout, report, problem, true), c.measured) << problem;
        if (!c.measured) {
            EXPECT_NE(problem.find("loudness is measured at 8,000 Hz and above"), std::string::npos) << problem;
        }
        EXPECT_TRUE(MeasureLevels(layout, report, problem, false)) << problem;
    }
}

#ifdef SONDARA_CHECK_PROGRAM
namespace {

// Forty seconds of 16-bit stereo noise at 48 kHz: 7.7 MB, the checker's
// reads of 4 MiB cut in the middle of a frame.
std::string FortySeconds()
{
    std::string data(48000 * 40 * 4, '\0');
    std::uint32_t seed = 25;
    for (std::size_t i = 0; i < data.size(); i += 2) {
        seed = seed * 1664525u + 1013904223u;
        data[i] = static_cast<char>(seed >> 16);
        data[i + 1] = static_cast<char>(seed >> 27); // about -24 dBFS
    }
    return Wave(FormatBody(1, 2, 48000, 16), data);
}

} // namespace

// A read that fails part way is a refusal with a message, never the
// figures of a shorter file; reads that come short are followed up, and
// the figures are those of reads that came whole.
TEST(MeasureTrustProgram, ReadFailuresRefuseAndShortReadsMeasureTheSame)
{
    TempDir dir;
    dir.Write("long.wav", FortySeconds());
    const std::vector<std::string> arguments{"--levels", "--loudness", "long.wav"};
    const CheckerOutcome whole = RunChecker(dir, arguments);
    ASSERT_EQ(whole.status, 0) << whole.out << whole.err;
    ASSERT_NE(whole.out.find("duration 0:40.000 (1,920,000 frames"), std::string::npos) << whole.out;
    // The second read fails: what the first brought is not a file of its own.
    const CheckerSettings secondReadFails = FaultSettings("long.wav", {"SONDARA_FAULT_EIO_AFTER=4194304"});
    const CheckerOutcome failed = RunChecker(dir, arguments, "", secondReadFails);
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.out, "(the audio could not be read after frame 1,048,565 of 1,920,000)\n");
    const CheckerOutcome failedJson = RunChecker(dir, {"--json", "--levels", "long.wav"}, "", secondReadFails);
    EXPECT_EQ(failedJson.status, 1);
    EXPECT_EQ(failedJson.out, "[\n  {\"path\": \"long.wav\", \"error\": "
                              "\"the audio could not be read after frame 1,048,565 of 1,920,000\"}\n]\n");
    // A fault before the audio (in the header) leaves nothing to measure.
    const CheckerOutcome early = RunChecker(dir, arguments, "", FaultSettings("long.wav", {"SONDARA_FAULT_EIO_AFTER=0"}));
    EXPECT_EQ(early.status, 1);
    EXPECT_EQ(early.out.find("duration"), std::string::npos) << early.out;
    const CheckerOutcome cut = RunChecker(dir, arguments, "", FaultSettings("long.wav", {"SONDARA_FAULT_SHORT_READS=4096"}));
    EXPECT_EQ(cut.status, 0);
    EXPECT_EQ(cut.out, whole.out);
    // Nor is it the MD5 of a shorter file: no hash, alone or beside the levels.
    const CheckerOutcome hashFailed = RunChecker(dir, {"--md5", "long.wav"}, "", secondReadFails);
    EXPECT_EQ(hashFailed.status, 1);
    EXPECT_EQ(hashFailed.out, "(the audio could not be read after byte 4,194,260 of 7,680,000)\n");
    const CheckerOutcome bothFailed = RunChecker(dir, {"--json", "--levels", "--md5", "long.wav"}, "", secondReadFails);
    EXPECT_EQ(bothFailed.status, 1);
    EXPECT_EQ(bothFailed.out, failedJson.out);
}

// What the command line makes of samples that are no level and of a rate
// of 0: the count beside the figures, and a refusal of the loudness.
TEST(MeasureTrustProgram, NonFiniteSamplesAndRateZero)
{
    TempDir dir;
    std::vector<float> samples = TwoSines<float>();
    samples[2 * 100] = std::numeric_limits<float>::infinity();
    dir.Write("inf.wav", FloatWave(samples, 2, 48000));
    samples[2 * 100] = std::numeric_limits<float>::quiet_NaN();
    dir.Write("nan.wav", FloatWave(samples, 2, 48000));
    dir.Write("rate0.wav", FloatWave(TwoSines<float>(), 2, 0));
    for (const char* name : {"inf.wav", "nan.wav"}) {
        SCOPED_TRACE(name);
        const CheckerOutcome text = RunChecker(dir, {"--levels", "--loudness", name});
        EXPECT_EQ(text.status, 1);
        EXPECT_NE(text.out.find("channel 1: peak -6.02 dBFS, RMS -9.03 dBFS, DC offset "), std::string::npos) << text.out;
        EXPECT_NE(text.out.find("1 not finite, left out"), std::string::npos) << text.out;
        EXPECT_NE(text.out.find("loudness: integrated -"), std::string::npos) << text.out;
        EXPECT_EQ(text.out.find("integrated -inf"), std::string::npos) << text.out;
        const CheckerOutcome json = RunChecker(dir, {"--json", "--levels", "--loudness", name});
        EXPECT_EQ(json.status, 1);
        EXPECT_NE(json.out.find("\"nonFinite\": 1, "), std::string::npos) << json.out;
        EXPECT_EQ(json.out.find("\"integrated\": null"), std::string::npos) << json.out;
    }
    // A miss in JSON: the measure, its channel, the figure and the limit.
    const CheckerOutcome missed = RunChecker(dir, {"--json", "--target-lufs", "-10", "--max-true-peak", "-12", "inf.wav"});
    EXPECT_EQ(missed.status, 1);
    EXPECT_NE(missed.out.find("\"misses\": [{\"measure\": \"integrated\", \"channel\": null, \"value\": -"),
              std::string::npos)
        << missed.out;
    EXPECT_NE(missed.out.find("{\"measure\": \"truePeak\", \"channel\": 1, \"value\": -6.0, \"limit\": -12.00, "
                              "\"message\": \"channel 1: true peak -6.0 dBTP, at most -12.0\"}"),
              std::string::npos)
        << missed.out;
    const CheckerOutcome rate0 = RunChecker(dir, {"--levels", "--loudness", "rate0.wav"});
    EXPECT_EQ(rate0.status, 1);
    EXPECT_EQ(rate0.out, "(loudness is measured at 8,000 Hz and above, not at 0 Hz)\n");
}
#endif
