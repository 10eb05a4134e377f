#include "base/TextFormat.h"
#include "measure/DeliveryTarget.h"
#include "measure/Loudness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace {

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
            const auto value = static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * frequency * n / rate + phase));
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
// their descriptions, with the values and tolerances they state, and the
// relative gate at work.
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
        {"3341-5: -26, -20, -26", 48000, {{20, -26}, {20.1, -20}, {20, -26}}, -23, -1, 0},
        {"3342-1: -20, -30", 48000, {{20, -20}, {20, -30}}, -1000, 10, 1},
        {"3342-2: -20, -15", 48000, {{20, -20}, {20, -15}}, -1000, 5, 1},
        {"3342-3: -40, -20", 48000, {{20, -40}, {20, -20}}, -1000, 20, 1},
        {"3342-4: -50, -35, -20, -35, -50", 48000, {{20, -50}, {20, -35}, {20, -20}, {20, -35}, {20, -50}}, -1000, 15, 1},
        {"44.1 kHz: -23 dBFS", 44100, {{20, -23}}, -23, 0, 1},
        // The relative gate lies 10 LU under the loudness of the blocks above
        // the absolute gate: a quiet half 8.3 LU under it is inside a -10 LU
        // gate and outside a -8 or -5 LU one, which would give -20; the
        // figure is the mean energy of both halves. Quieter, the loud half
        // alone counts.
        {"gate: -20, -31", 48000, {{20, -20}, {20, -31}}, 10 * std::log10((std::pow(10.0, -2.0) + std::pow(10.0, -3.1)) / 2), -1, 0},
        {"gate: -20, -40", 48000, {{20, -20}, {20, -40}}, -20, -1, 0},
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
TEST(Loudness, TruePeaksBetweenSamplesAndInParts)
{
    for (double phase : {0.0, std::numbers::pi / 8, std::numbers::pi / 4, 3 * std::numbers::pi / 8}) {
        SCOPED_TRACE(phase);
        const LoudnessMeter::Figures figures = Measure(48000, 1, {{1, -6}}, 12000, phase);
        EXPECT_NEAR(Decibels(figures.truePeak[0]), -6 - 0.1, 0.3);
    }
    const LoudnessMeter::Figures low = Measure(44100, 1, {{1, -1}}, 997);
    EXPECT_NEAR(Decibels(low.truePeak[0]), -1, 0.1);

    // True peaks found in parts, by meters primed with the frames before their
    // part, are those of the whole, to the last bit: noise whose highest value
    // between samples lies anywhere, cut at places that fall inside the
    // filter's reach of it, in runs of every length the vectors treat apart.
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

// BS.1770-4's weights by position: 1.41 at 60° to 120° (the side pair,
// and the surround pair of 5.1 and quad), 1.0 elsewhere (the back pair of
// 7.1 at 135° to 150°, a back centre), LFE not at all.
TEST(Loudness, ChannelWeightsByPosition)
{
    const struct {
        const char* name;
        std::uint16_t channels;
        std::uint32_t mask;
        std::vector<double> weights;
    } cases[] = {
        {"5.1 in the usual order, no mask", 6, 0, {1, 1, 1, 0, 1.41, 1.41}},
        {"5.1 with side channels", 6, 0x60F, {1, 1, 1, 0, 1.41, 1.41}},
        {"5.1 with back channels", 6, 0x3F, {1, 1, 1, 0, 1.41, 1.41}},
        {"quad", 4, 0x33, {1, 1, 1.41, 1.41}},
        {"7.1: back pair 1.0, side pair 1.41", 8, 0x63F, {1, 1, 1, 0, 1, 1, 1.41, 1.41}},
        {"6.1: back centre 1.0", 7, 0x70F, {1, 1, 1, 0, 1, 1.41, 1.41}},
        {"3.0 with a back centre", 3, 0x103, {1, 1, 1}},
        {"stereo, no mask", 2, 0, {1, 1}},
        {"five channels, no mask", 5, 0, {1, 1, 1, 1, 1}},
        {"more channels than the mask names", 4, 0x3, {1, 1, 1, 1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(LoudnessMeter::ChannelWeights(c.channels, c.mask), c.weights);
    }
}

// A target's verdict is taken on each figure as printed, so the figure a
// miss prints always lies outside its limit and a pass's inside: a true
// peak of -0.97 dBTP reads -1.0 and meets "at most -1.0". Each miss carries
// its measure, channel, value and limit beside the sentence.
TEST(DeliveryTarget, VerdictOnTheFigureAsPrinted)
{
    DeliveryTarget target;
    ASSERT_TRUE(FindDeliveryTarget("ebu-r128", target)); // -23 ±0.5 LUFS, at most -1 dBTP
    const double none = -std::numeric_limits<double>::infinity();
    const auto peak = [](double dbtp) { return std::pow(10.0, dbtp / 20); };
    const struct {
        const char* name;
        double integrated;
        std::vector<double> truePeaks; // as fractions of full scale
        std::vector<std::string> misses;
        double value, limit;           // of the first miss
    } cases[] = {
        {"pass", -23.2, {peak(-3), peak(-2)}, {}, 0, 0},
        {"too quiet", -24.0, {peak(-3)}, {"integrated -24.0 LUFS, wanted -23.0 ±0.5"}, -24.0, -23.5},
        {"too loud", -22.0, {peak(-3)}, {"integrated -22.0 LUFS, wanted -23.0 ±0.5"}, -22.0, -22.5},
        {"quiet edge printed inside", -23.54, {peak(-3)}, {}, 0, 0},
        {"quiet edge printed outside", -23.56, {peak(-3)}, {"integrated -23.6 LUFS, wanted -23.0 ±0.5"}, -23.6, -23.5},
        {"loud edge printed inside", -22.54, {peak(-3)}, {}, 0, 0},
        {"true peak printed at the limit", -23, {peak(-3), peak(-0.97)}, {}, 0, 0},
        {"true peak over", -23, {peak(-3), peak(-0.94)}, {"channel 2: true peak -0.9 dBTP, at most -1.0"}, -0.9, -1.0},
        {"silence: no loudness, no peak", none, {0, 0}, {"integrated -inf LUFS, wanted -23.0 ±0.5"}, none, -23.5},
        {"both", -20, {peak(0.5)},
         {"integrated -20.0 LUFS, wanted -23.0 ±0.5", "channel 1: true peak 0.5 dBTP, at most -1.0"}, -20.0, -22.5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const LoudnessMeter::Figures figures{c.integrated, 0, c.integrated, c.integrated, c.truePeaks};
        const std::vector<TargetMiss> misses = FindTargetMisses(target, figures);
        std::vector<std::string> texts;
        for (const TargetMiss& miss : misses)
            texts.push_back(miss.text);
        EXPECT_EQ(texts, c.misses);
        for (const TargetMiss& miss : misses) {
            const bool integrated = miss.measure == TargetMiss::Measure::Integrated;
            EXPECT_EQ(miss.channel.has_value(), !integrated);
            if (std::isinf(miss.value))
                continue;
            // The figure in the sentence is the value, and it lies outside the limit.
            EXPECT_NE(miss.text.find(" " + FormatFixed(miss.value, 1) + (integrated ? " LUFS" : " dBTP")), std::string::npos);
            EXPECT_TRUE(miss.belowLimit ? miss.value < miss.limit : miss.value > miss.limit);
        }
        if (!misses.empty()) {
            EXPECT_EQ(misses[0].value, c.value);
            EXPECT_DOUBLE_EQ(misses[0].limit, c.limit);
        }
        if (misses.size() == 2) {
            EXPECT_STREQ(MeasureName(misses[1].measure), "truePeak");
            EXPECT_EQ(misses[1].channel, 1u);
        }
    }
}

// The wide path (AVX2 and FMA) against the plain one on the same signals:
// noise over sines on one, two and three channels, at rates that
// oversample four times and twice, fed in runs of odd lengths. A fused
// multiply-add rounds once where the plain path rounds twice, so the two
// differ in the last bits: the loudness within 10^-9 LU (the differences
// seen are near 10^-14), the true peaks within 10^-5 dB (near 10^-6). The
// widest path (AVX-512), where the processor has it, gives the wide path's
// figures to the last bit.
TEST(Loudness, WideVectorsGiveThePlainFigures)
{
    if (BestVectorPath() == VectorPath::Plain)
        GTEST_SKIP() << "this processor has no AVX2 and FMA";
    const bool widest = BestVectorPath() == VectorPath::Widest;
    std::uint32_t seed = 777;
    for (const std::uint32_t rate : {44100u, 96000u}) {
        for (const std::size_t channels : {1u, 2u, 3u}) {
            SCOPED_TRACE(std::to_string(rate) + " Hz, " + std::to_string(channels) + " channels");
            std::vector<float> frames(channels * rate * 5);
            for (std::size_t i = 0; i < frames.size(); ++i) {
                seed = seed * 1664525u + 1013904223u;
                const double t = static_cast<double>(i / channels) / rate;
                const double swell = 0.05 + 0.4 * (1 + std::sin(2 * std::numbers::pi * 0.3 * t));
                frames[i] = static_cast<float>(swell * std::sin(2 * std::numbers::pi * (440 + 300 * (i % channels)) * t) +
                                               static_cast<std::int32_t>(seed) / 2147483648.0 * 0.2);
            }
            LoudnessMeter plain(rate, std::vector<double>(channels, 1.0), VectorPath::Plain);
            LoudnessMeter wide(rate, std::vector<double>(channels, 1.0), VectorPath::Wide);
            LoudnessMeter widestMeter(rate, std::vector<double>(channels, 1.0), widest ? VectorPath::Widest : VectorPath::Wide);
            for (std::size_t first = 0, run = 1; first < rate * 5; first += run, run = run * 3 + 1) {
                const std::size_t count = std::min(run, rate * 5 - first);
                plain.Add(frames.data() + first * channels, count);
                wide.Add(frames.data() + first * channels, count);
                widestMeter.Add(frames.data() + first * channels, count);
            }
            const LoudnessMeter::Figures a = plain.Result(), b = wide.Result(), w = widestMeter.Result();
            EXPECT_EQ(w.integrated, b.integrated);
            EXPECT_EQ(w.range, b.range);
            EXPECT_EQ(w.momentaryMax, b.momentaryMax);
            EXPECT_EQ(w.shortTermMax, b.shortTermMax);
            EXPECT_EQ(w.truePeak, b.truePeak);
            EXPECT_NEAR(a.integrated, b.integrated, 1e-9);
            EXPECT_NEAR(a.range, b.range, 1e-9);
            EXPECT_NEAR(a.momentaryMax, b.momentaryMax, 1e-9);
            EXPECT_NEAR(a.shortTermMax, b.shortTermMax, 1e-9);
            for (std::size_t c = 0; c < channels; ++c)
                EXPECT_NEAR(Decibels(a.truePeak[c]), Decibels(b.truePeak[c]), 1e-5);
        }
    }
}

// A long run's K-weighting is cut into segments filtered side by side, each
// warmed up from rest (see KWeighting); a run too short to cut goes through
// whole. One long run, and a short run then a long one (which starts in the
// middle of a step and goes on from the filters' states), must give the
// figures of the same frames in short runs, to within rounding: for every
// way the lanes are filled (read in place for 1, 2, 4 and 8 channels, laid
// side by side for 3 and 6, more than one group of lanes for 11), at the
// lowest rate measured, a common one and a high one, on a programme the
// filters remember much of: a strong 20 Hz tone and an offset under noise
// that swells, and half a second of digital silence. The frames are 16-bit
// codes, and where the lanes read frames in place the codes themselves give
// the figures of their floats to the last bit.
TEST(Loudness, LongRunsCutIntoSegmentsGiveTheFiguresOfShortRuns)
{
    const struct {
        std::uint32_t rate;
        std::vector<std::size_t> channelCounts;
    } cases[] = {{8000, {1, 2, 3, 4, 6, 8, 11}}, {48000, {1, 2, 3, 4, 6, 8, 11}}, {192000, {2}}};
    std::uint32_t seed = 4242;
    for (const auto& c : cases) {
        for (const std::size_t channels : c.channelCounts) {
            SCOPED_TRACE(std::to_string(c.rate) + " Hz, " + std::to_string(channels) + " channels");
            const std::size_t frameCount = c.rate * 9 + 77;
            std::vector<float> frames(channels * frameCount);
            std::vector<std::int16_t> codes(frames.size());
            for (std::size_t i = 0; i < frames.size(); ++i) {
                seed = seed * 1664525u + 1013904223u;
                const double t = static_cast<double>(i / channels) / c.rate;
                const double swell = t >= 3.0 && t < 3.5 ? 0 : 0.5 * (1 + std::sin(2 * std::numbers::pi * 0.2 * t));
                const double value =
                    swell * (0.05 + 0.3 * std::sin(2 * std::numbers::pi * 20 * t + static_cast<double>(i % channels)) +
                             static_cast<std::int32_t>(seed) / 2147483648.0 * 0.2);
                codes[i] = static_cast<std::int16_t>(std::lround(value * 32767));
                frames[i] = static_cast<float>(codes[i]) / 32768.0f;
            }
            const std::vector<double> weights(channels, 1.0);
            LoudnessMeter whole(c.rate, weights), twoRuns(c.rate, weights), shortRuns(c.rate, weights);
            whole.AddLoudness(frames.data(), frameCount);
            twoRuns.AddLoudness(frames.data(), 1234);
            twoRuns.AddLoudness(frames.data() + 1234 * channels, frameCount - 1234);
            for (std::size_t first = 0; first < frameCount; first += 997)
                shortRuns.AddLoudness(frames.data() + first * channels, std::min<std::size_t>(997, frameCount - first));
            const LoudnessMeter::Figures expected = shortRuns.Result();
            ASSERT_GT(expected.integrated, -30);
            for (const LoudnessMeter* meter : {&whole, &twoRuns}) {
                const LoudnessMeter::Figures figures = meter->Result();
                EXPECT_NEAR(figures.integrated, expected.integrated, 1e-9);
                EXPECT_NEAR(figures.range, expected.range, 1e-9);
                EXPECT_NEAR(figures.momentaryMax, expected.momentaryMax, 1e-9);
                EXPECT_NEAR(figures.shortTermMax, expected.shortTermMax, 1e-9);
            }
            LoudnessMeter fromCodes(c.rate, weights);
            if (fromCodes.TakesCodes()) {
                std::vector<std::uint8_t> bytes(codes.size() * 2);
                std::memcpy(bytes.data(), codes.data(), bytes.size());
                fromCodes.AddLoudnessCodes(bytes.data(), 1234);
                fromCodes.AddLoudnessCodes(bytes.data() + 1234 * channels * 2, frameCount - 1234);
                const LoudnessMeter::Figures figures = fromCodes.Result(), floats = twoRuns.Result();
                EXPECT_EQ(figures.integrated, floats.integrated);
                EXPECT_EQ(figures.range, floats.range);
                EXPECT_EQ(figures.momentaryMax, floats.momentaryMax);
                EXPECT_EQ(figures.shortTermMax, floats.shortTermMax);
            }
        }
    }
}

// The true-peak filter folded by its symmetry, in vectors, against the
// filter written out plainly in doubles: each phase between samples its
// own sum of 12 taps of a Hann-windowed sinc, summing to 1. Noise of
// different levels on three channels, oversampled four times and twice,
// with a lone full-scale pair of opposite samples (the highest values lie
// between them) in runs of every length the vectors treat apart.
TEST(Loudness, FoldedTruePeakFilterGivesThePlainSums)
{
    for (const std::uint32_t rate : {44100u, 96000u}) {
        SCOPED_TRACE(rate);
        const int oversampling = rate < 96000 ? 4 : 2, taps = 12 * oversampling + 1;
        constexpr std::size_t kChannels = 3, kFrames = 5003;
        std::vector<float> frames(kChannels * kFrames);
        std::uint32_t seed = 99;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            seed = seed * 1664525u + 1013904223u;
            frames[i] = static_cast<float>(static_cast<std::int32_t>(seed) / 2147483648.0 * (0.2 + 0.3 * (i % kChannels)));
        }
        frames[2500 * kChannels + 1] = 1.0f;
        frames[2501 * kChannels + 1] = -1.0f;
        std::vector<double> expected(kChannels, 0.0);
        for (std::size_t c = 0; c < kChannels; ++c) {
            for (std::size_t i = 0; i < kFrames; ++i) {
                const double sample = frames[i * kChannels + c];
                expected[c] = std::max(expected[c], std::fabs(sample));
                for (int p = 1; p < oversampling; ++p) {
                    double value = 0, sum = 0;
                    for (int k = 0; k < 12; ++k) {
                        const int m = p + k * oversampling;
                        const double x = (m - (taps - 1) / 2.0) / oversampling;
                        const double tap = std::sin(std::numbers::pi * x) / (std::numbers::pi * x) *
                                           (0.5 - 0.5 * std::cos(2 * std::numbers::pi * m / (taps - 1)));
                        sum += tap;
                        value += i >= static_cast<std::size_t>(k) ? tap * frames[(i - k) * kChannels + c] : 0;
                    }
                    expected[c] = std::max(expected[c], std::fabs(value / sum));
                }
            }
        }
        EXPECT_GT(expected[1], 1.02); // the lone pair's peak lies between them
        for (const VectorPath path : {VectorPath::Plain, BestVectorPath()}) {
            LoudnessMeter meter(rate, std::vector<double>(kChannels, 1.0), path);
            for (std::size_t first = 0, run = 1; first < kFrames; first += run, run = run * 2 + 1)
                meter.AddTruePeaks(frames.data() + first * kChannels, std::min(run, kFrames - first));
            const std::vector<double> peaks = meter.Result().truePeak;
            for (std::size_t c = 0; c < kChannels; ++c)
                EXPECT_NEAR(Decibels(peaks[c]), Decibels(expected[c]), 1e-5) << "channel " << c + 1;
        }
    }
}
