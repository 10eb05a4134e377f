#include "check/Loudness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

constexpr double kPi = 3.14159265358979323846;

// Sines of 1 kHz (or another frequency) in the same phase on every
// channel, segment after segment: seconds and level in dBFS.
struct Segment {
    double seconds;
    double level;
};

LoudnessMeter::Figures Measure(std::uint32_t rate, int channels, const std::vector<Segment>& segments,
                               double frequency = 1000, double phase = 0)
{
    LoudnessMeter meter(rate, LoudnessMeter::ChannelWeights(static_cast<std::uint16_t>(channels), 0));
    std::vector<float> frames;
    long n = 0;
    for (const Segment& segment : segments) {
        const double amplitude = std::pow(10.0, segment.level / 20);
        frames.clear();
        for (long i = 0; i < static_cast<long>(segment.seconds * rate); ++i, ++n) {
            const auto value = static_cast<float>(amplitude * std::sin(2 * kPi * frequency * n / rate + phase));
            for (int c = 0; c < channels; ++c)
                frames.push_back(value);
        }
        meter.Add(frames.data(), frames.size() / channels);
    }
    return meter.Result();
}

double Decibels(double fraction)
{
    return 20 * std::log10(fraction);
}

} // namespace

// The test signals of EBU Tech 3341 and 3342 that can be written from
// their descriptions, with the values and tolerances they state.
TEST(Loudness, EbuTestSignalsGiveTheirStatedValues)
{
    const struct {
        const char* name;
        std::uint32_t rate;
        std::vector<Segment> segments;
        double integrated, range, rangeTolerance;
    } cases[] = {
        {"3341-1: -23 dBFS", 48000, {{20, -23}}, -23, 0, 1},
        {"3341-2: -33 dBFS", 48000, {{20, -33}}, -33, 0, 1},
        {"3341-3: -36, -23, -36", 48000, {{10, -36}, {60, -23}, {10, -36}}, -23, -1, 0},
        {"3341-4: -72, -36, -23, -36, -72", 48000, {{10, -72}, {10, -36}, {60, -23}, {10, -36}, {10, -72}}, -23, -1, 0},
        {"3342-1: -20, -30", 48000, {{20, -20}, {20, -30}}, -1000, 10, 1},
        {"3342-2: -20, -15", 48000, {{20, -20}, {20, -15}}, -1000, 5, 1},
        {"3342-3: -40, -20", 48000, {{20, -40}, {20, -20}}, -1000, 20, 1},
        {"3342-4: -50, -35, -20, -35, -50", 48000, {{20, -50}, {20, -35}, {20, -20}, {20, -35}, {20, -50}}, -1000, 15, 1},
        {"44.1 kHz: -23 dBFS", 44100, {{20, -23}}, -23, 0, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const LoudnessMeter::Figures figures = Measure(c.rate, 2, c.segments);
        if (c.integrated > -100) {
            EXPECT_NEAR(figures.integrated, c.integrated, 0.1);
        }
        if (c.range >= 0) {
            EXPECT_NEAR(figures.range, c.range, c.rangeTolerance);
        }
    }
    // A constant level: momentary and short-term loudness are that level.
    const LoudnessMeter::Figures steady = Measure(48000, 2, {{10, -26}});
    EXPECT_NEAR(steady.momentaryMax, -26, 0.1);
    EXPECT_NEAR(steady.shortTermMax, -26, 0.1);
    // Silence has no loudness.
    const LoudnessMeter::Figures silence = Measure(48000, 2, {{5, -200}});
    EXPECT_TRUE(std::isinf(silence.integrated));
}

// A sine at a quarter of the sample rate sampled off its crests: the true
// peak is its amplitude, +0.2/-0.4 dB, where the samples alone fall 3 dB
// short.
TEST(Loudness, TruePeakBetweenSamples)
{
    for (double phase : {0.0, kPi / 8, kPi / 4, 3 * kPi / 8}) {
        SCOPED_TRACE(phase);
        const LoudnessMeter::Figures figures = Measure(48000, 1, {{1, -6}}, 12000, phase);
        EXPECT_NEAR(Decibels(figures.truePeak[0]), -6 - 0.1, 0.3);
    }
    const LoudnessMeter::Figures low = Measure(44100, 1, {{1, -1}}, 997);
    EXPECT_NEAR(Decibels(low.truePeak[0]), -1, 0.1);
}

// True peaks found in parts, by meters primed with the frames before their
// part, are those of the whole, to the last bit: noise whose highest value
// between samples lies anywhere, cut at places that fall inside the
// filter's reach of it, in runs of every length the vectors treat apart.
TEST(Loudness, TruePeaksInPartsAreThoseOfTheWhole)
{
    constexpr std::size_t kChannels = 3, kFrames = 4000;
    std::vector<float> frames(kChannels * kFrames);
    std::uint32_t seed = 12345;
    for (float& sample : frames) {
        seed = seed * 1664525u + 1013904223u;
        sample = static_cast<float>(static_cast<std::int32_t>(seed) / 2147483648.0 * 0.5);
    }
    frames[1234 * kChannels + 1] = 0.9f; // one channel's peak near a cut
    frames[1235 * kChannels + 1] = -0.9f;
    LoudnessMeter whole(48000, std::vector<double>(kChannels, 1.0));
    whole.AddTruePeaks(frames.data(), kFrames);
    const std::vector<double> expected = whole.Result().truePeak;
    for (const std::vector<std::size_t>& cuts : {std::vector<std::size_t>{1230}, {1234, 1236, 1237, 1250}, {15, 16, 3999}}) {
        LoudnessMeter merged(48000, std::vector<double>(kChannels, 1.0));
        std::size_t first = 0;
        for (std::size_t i = 0; i <= cuts.size(); ++i) {
            const std::size_t last = i < cuts.size() ? cuts[i] : kFrames;
            LoudnessMeter part(48000, std::vector<double>(kChannels, 1.0));
            if (first > 0) {
                const std::size_t before = std::min(first, LoudnessMeter::kTruePeakHistory);
                part.PrimeTruePeaks(frames.data() + (first - before) * kChannels, before);
            }
            part.AddTruePeaks(frames.data() + first * kChannels, last - first);
            merged.MergeTruePeaks(part);
            first = last;
        }
        EXPECT_EQ(merged.Result().truePeak, expected) << "cut first at " << cuts[0];
    }
}

// BS.1770's weights: surround channels count 1.41, LFE not at all.
TEST(Loudness, ChannelWeightsOfFivePointOne)
{
    EXPECT_EQ(LoudnessMeter::ChannelWeights(6, 0), (std::vector<double>{1, 1, 1, 0, 1.41, 1.41}));
    EXPECT_EQ(LoudnessMeter::ChannelWeights(6, 0x60F), (std::vector<double>{1, 1, 1, 0, 1.41, 1.41}));
    EXPECT_EQ(LoudnessMeter::ChannelWeights(2, 0), (std::vector<double>{1, 1}));
    EXPECT_EQ(LoudnessMeter::ChannelWeights(3, 0x103), (std::vector<double>{1, 1, 1.41}));
}
