#include "measure/Loudness.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kAbsoluteGate = -70.0;
constexpr double kRelativeGate = -10.0;
constexpr double kRangeGate = -20.0;

// BS.1770's loudness of a mean square, weighted and summed over channels.
double LoudnessOf(double energy)
{
    return energy > 0 ? -0.691 + 10 * std::log10(energy) : -std::numeric_limits<double>::infinity();
}

// Copies one channel of interleaved frames, count samples stride apart,
// into a line of its own. A channel of stereo goes four samples at a time,
// picked from two vectors of the compiler's own: the compiler makes no
// vector instructions of a copy with a stride by itself.
void TakeChannel(float* line, const float* samples, std::size_t count, std::size_t stride)
{
    using Four = float __attribute__((vector_size(16)));
    std::size_t i = 0;
    if (stride == 2) {
        // Eight floats a load, the last of them the other channel's sample
        // after the fourth: a frame past the fourth must be there too.
        for (; i + 5 <= count; i += 4) {
            Four first, second;
            std::memcpy(&first, samples + 2 * i, sizeof first);
            std::memcpy(&second, samples + 2 * i + 4, sizeof second);
            const Four even = __builtin_shufflevector(first, second, 0, 2, 4, 6);
            std::memcpy(line + i, &even, sizeof even);
        }
    }
    for (; i < count; ++i)
        line[i] = samples[i * stride];
}

} // namespace

// BS.1770-4 weighs by position: 1.41 for a loudspeaker at 60° to 120°
// from the front, 1.0 for the rest. Side left and right (0x200, 0x400) sit
// there always. Back left and right (0x10, 0x20) are the surround pair of
// 5.1 and quad when no side channels are present (mask 0x3F, 0x33); beside
// side channels, as in 7.1 (0x63F), they are the rear pair at 135° to 150°
// and weigh 1.0, as a back centre (0x100) does. LFE weighs nothing.
std::vector<double> LoudnessMeter::ChannelWeights(std::uint16_t channels, std::uint32_t channelMask)
{
    constexpr std::uint32_t kLowFrequency = 0x8;
    constexpr std::uint32_t kBack = 0x10 | 0x20;
    constexpr std::uint32_t kSide = 0x200 | 0x400;
    const std::uint32_t surround = kSide | ((channelMask & kSide) ? 0 : kBack);
    std::vector<double> weights(channels, 1.0);
    if (channelMask != 0) {
        std::size_t channel = 0;
        for (std::uint32_t bit = 1; bit != 0 && channel < channels; bit <<= 1) {
            if (!(channelMask & bit))
                continue;
            weights[channel++] = bit == kLowFrequency ? 0.0 : (bit & surround) ? 1.41 : 1.0;
        }
    } else if (channels == 6) {
        weights = {1.0, 1.0, 1.0, 0.0, 1.41, 1.41};
    }
    return weights;
}

LoudnessMeter::LoudnessMeter(std::uint32_t sampleRate, std::vector<double> channelWeights, VectorPath path)
    : weights(channelWeights), path(path), kWeighting(sampleRate, std::move(channelWeights), path),
      peaks(weights.size()), stepFrames(kWeighting.StepFrames()), steps(30, 0.0),
      oversampling(sampleRate < 96000 ? 4 : sampleRate < 192000 ? 2 : 1)
{
    // The interpolation filter: a sinc cut at the original Nyquist
    // frequency under a Hann window, 12 taps a phase and one more, so
    // that its middle falls on a sample: the phase on the samples is then
    // the samples themselves (the sinc is 0 at every other one), and only
    // the phases between them are worked out, each summing to 1, and
    // folded by their symmetry (see TruePeakTaps).
    const int taps = kTruePeakTaps * oversampling + 1;
    const auto phase = [&](int p) {
        std::array<double, kTruePeakTaps> row{};
        double sum = 0;
        for (int k = 0; k < kTruePeakTaps; ++k) {
            const int m = p + k * oversampling;
            const double x = (m - (taps - 1) / 2.0) / oversampling;
            const double sinc = std::sin(kPi * x) / (kPi * x);
            const double window = 0.5 - 0.5 * std::cos(2 * kPi * m / (taps - 1));
            row[k] = sinc * window;
            sum += row[k];
        }
        for (double& tap : row)
            tap /= sum;
        return row;
    };
    if (oversampling > 1) {
        const std::array<double, kTruePeakTaps> middle = phase(oversampling / 2);
        for (int k = 0; k < kTruePeakHalf; ++k)
            interpolator.middle[k] = static_cast<float>((middle[k] + middle[kTruePeakTaps - 1 - k]) / 2);
    }
    if (oversampling == 4) {
        const std::array<double, kTruePeakTaps> quarter = phase(1);
        for (int k = 0; k < kTruePeakHalf; ++k) {
            interpolator.outer[k] = static_cast<float>((quarter[k] + quarter[kTruePeakTaps - 1 - k]) / 2);
            interpolator.skew[k] = static_cast<float>((quarter[k] - quarter[kTruePeakTaps - 1 - k]) / 2);
        }
    }
    for (PeakState& state : peaks)
        state.line.assign(kTruePeakTaps - 1, 0.0f);
}

// The highest magnitude of a run of one channel's samples and of the
// values between them. The samples are laid in a line behind the last
// kTruePeakTaps - 1 of the run before, so that the filter reads them side
// by side.
float LoudnessMeter::TruePeakOf(PeakState& state, const float* samples, std::size_t count, std::size_t stride) const
{
    constexpr std::size_t kBehind = kTruePeakTaps - 1;
    std::vector<float>& line = state.line;
    if (line.size() < kBehind + count)
        line.resize(kBehind + count);
    TakeChannel(line.data() + kBehind, samples, count, stride);
    const float peak = HighestSquare(path, interpolator, line.data() + kBehind, count);
    std::memmove(line.data(), line.data() + count, kBehind * sizeof(float));
    return std::sqrt(peak);
}

void LoudnessMeter::PrimeTruePeaks(const float* frames, std::size_t frameCount)
{
    constexpr std::size_t kBehind = kTruePeakTaps - 1;
    static_assert(kBehind == kTruePeakHistory);
    const std::size_t count = peaks.size(), taken = std::min(frameCount, kBehind);
    for (std::size_t c = 0; c < count; ++c) {
        std::vector<float>& line = peaks[c].line;
        std::memmove(line.data(), line.data() + taken, (kBehind - taken) * sizeof(float));
        for (std::size_t i = 0; i < taken; ++i)
            line[kBehind - taken + i] = frames[(frameCount - taken + i) * count + c];
    }
}

void LoudnessMeter::MergeTruePeaks(const LoudnessMeter& other)
{
    for (std::size_t c = 0; c < peaks.size() && c < other.peaks.size(); ++c)
        peaks[c].truePeak = std::max(peaks[c].truePeak, other.peaks[c].truePeak);
}

void LoudnessMeter::AddLoudness(const float* frames, std::size_t frameCount)
{
    const std::size_t count = weights.size();
    AddLoudness(
        [&](std::size_t first, std::uint32_t run, float* out) {
            std::memcpy(out, frames + first * count, std::size_t{run} * count * sizeof(float));
        },
        frameCount);
}

void LoudnessMeter::AddLoudness(const FloatSource& source, std::size_t frameCount)
{
    endedSteps.clear();
    kWeighting.Add(source, frameCount, endedSteps);
    for (const double energy : endedSteps)
        EndOfStep(energy);
}

void LoudnessMeter::AddLoudnessCodes(const std::uint8_t* codes, std::size_t frameCount)
{
    endedSteps.clear();
    kWeighting.AddCodes(codes, frameCount, endedSteps);
    for (const double energy : endedSteps)
        EndOfStep(energy);
}

void LoudnessMeter::AddTruePeaks(const float* frames, std::size_t frameCount)
{
    const std::size_t count = peaks.size();
    for (std::size_t c = 0; c < count; ++c)
        peaks[c].truePeak = std::max<double>(peaks[c].truePeak, TruePeakOf(peaks[c], frames + c, frameCount, count));
}

// Every 100 ms: the step's weighted energy joins the last 30; a block of
// 400 ms (four steps, overlapping by three) goes to the gating, and once 3 s
// have passed a short-term value goes to the loudness range.
void LoudnessMeter::EndOfStep(double energy)
{
    steps[stepCount % steps.size()] = energy;
    ++stepCount;
    const auto sumOfLast = [&](std::size_t n) {
        double sum = 0;
        for (std::size_t i = 0; i < n; ++i)
            sum += steps[(stepCount - 1 - i) % steps.size()];
        return sum;
    };
    if (stepCount >= 4) {
        const double block = sumOfLast(4) / (4.0 * stepFrames);
        momentaryMax = std::max(momentaryMax, LoudnessOf(block));
        blocks.Add(block);
    }
    if (stepCount >= 30) {
        const double shortTerm = sumOfLast(30) / (30.0 * stepFrames);
        shortTermMax = std::max(shortTermMax, LoudnessOf(shortTerm));
        shortTerms.Add(shortTerm);
    }
}

LoudnessMeter::Figures LoudnessMeter::Result() const
{
    const double minusInfinity = -std::numeric_limits<double>::infinity();
    Figures figures{minusInfinity, 0, momentaryMax < -1e299 ? minusInfinity : momentaryMax,
                    shortTermMax < -1e299 ? minusInfinity : shortTermMax, {}};
    std::uint64_t count = 0;
    const double absoluteMean = blocks.MeanAbove(kAbsoluteGate, count);
    if (count > 0) {
        const double mean = blocks.MeanAbove(LoudnessOf(absoluteMean) + kRelativeGate, count);
        figures.integrated = LoudnessOf(mean);
    }
    const double shortMean = shortTerms.MeanAbove(kAbsoluteGate, count);
    if (count > 0) {
        const double floor = LoudnessOf(shortMean) + kRangeGate;
        figures.range = shortTerms.Percentile(floor, 0.95) - shortTerms.Percentile(floor, 0.10);
    }
    for (const PeakState& state : peaks)
        figures.truePeak.push_back(state.truePeak);
    return figures;
}

int LoudnessMeter::Histogram::Bin(double loudness)
{
    return static_cast<int>(std::floor((loudness - kAbsoluteGate) * 100));
}

void LoudnessMeter::Histogram::Add(double energy)
{
    const double loudness = LoudnessOf(energy);
    if (!(loudness >= kAbsoluteGate))
        return;
    const int bin = std::min(Bin(loudness), kBins - 1);
    energies[bin] += energy;
    ++counts[bin];
    top = std::max(top, bin + 1);
}

double LoudnessMeter::Histogram::MeanAbove(double loudness, std::uint64_t& count) const
{
    double sum = 0;
    count = 0;
    for (int bin = std::max(0, Bin(loudness)); bin < top; ++bin) {
        sum += energies[bin];
        count += counts[bin];
    }
    return count ? sum / count : 0;
}

// By the blocks' count: the loudness at the middle of the bin where the
// share is reached.
double LoudnessMeter::Histogram::Percentile(double floor, double share) const
{
    std::uint64_t total = 0;
    const int first = std::max(0, Bin(floor));
    for (int bin = first; bin < top; ++bin)
        total += counts[bin];
    if (total == 0)
        return 0;
    const auto wanted = static_cast<std::uint64_t>(std::ceil(share * static_cast<double>(total)));
    std::uint64_t seen = 0;
    for (int bin = first; bin < top; ++bin) {
        seen += counts[bin];
        if (seen >= std::max<std::uint64_t>(1, wanted))
            return kAbsoluteGate + (bin + 0.5) / 100;
    }
    return kAbsoluteGate + kBins / 100.0;
}
