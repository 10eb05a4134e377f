#include "check/Loudness.h"

#include <algorithm>
#include <cmath>
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

} // namespace

std::vector<double> LoudnessMeter::ChannelWeights(std::uint16_t channels, std::uint32_t channelMask)
{
    constexpr std::uint32_t kLowFrequency = 0x8;
    // Back left and right, back centre, side left and right.
    constexpr std::uint32_t kSurround = 0x10 | 0x20 | 0x100 | 0x200 | 0x400;
    std::vector<double> weights(channels, 1.0);
    if (channelMask != 0) {
        std::size_t channel = 0;
        for (std::uint32_t bit = 1; bit != 0 && channel < channels; bit <<= 1) {
            if (!(channelMask & bit))
                continue;
            weights[channel++] = bit == kLowFrequency ? 0.0 : (bit & kSurround) ? 1.41 : 1.0;
        }
    } else if (channels == 6) {
        weights = {1.0, 1.0, 1.0, 0.0, 1.41, 1.41};
    }
    return weights;
}

// The two K-weighting filters are worked out for the sample rate from
// their analogue prototypes: a high shelf of +4 dB above about 1.7 kHz and
// a high pass at about 38 Hz.
LoudnessMeter::LoudnessMeter(std::uint32_t sampleRate, std::vector<double> channelWeights)
    : weights(std::move(channelWeights)), channels(weights.size()),
      stepFrames(std::max<std::uint32_t>(1, sampleRate / 10)), steps(30, 0.0),
      oversampling(sampleRate < 96000 ? 4 : sampleRate < 192000 ? 2 : 1)
{
    const double rate = sampleRate > 0 ? sampleRate : 48000;
    {
        const double f0 = 1681.974450955533, gain = 3.999843853973347, q = 0.7071752369554196;
        const double k = std::tan(kPi * f0 / rate);
        const double vh = std::pow(10.0, gain / 20), vb = std::pow(vh, 0.4996667741545416);
        const double a0 = 1 + k / q + k * k;
        shelf = {(vh + vb * k / q + k * k) / a0, 2 * (k * k - vh) / a0, (vh - vb * k / q + k * k) / a0,
                 2 * (k * k - 1) / a0, (1 - k / q + k * k) / a0};
    }
    {
        const double f0 = 38.13547087602444, q = 0.5003270373238773;
        const double k = std::tan(kPi * f0 / rate);
        const double a0 = 1 + k / q + k * k;
        highPass = {1, -2, 1, 2 * (k * k - 1) / a0, (1 - k / q + k * k) / a0};
    }
    // The interpolation filter: a sinc cut at the original Nyquist
    // frequency under a Blackman window, its phases each summing to 1.
    // Stored tap by tap, the phases side by side (unused phases zero), so
    // that the inner loop works on all phases at once.
    const int taps = kTapsPerPhase * oversampling;
    for (int p = 0; p < oversampling; ++p) {
        double row[kTapsPerPhase];
        double sum = 0;
        for (int k = 0; k < kTapsPerPhase; ++k) {
            const int m = p + k * oversampling;
            const double x = (m - (taps - 1) / 2.0) / oversampling;
            const double sinc = x == 0 ? 1 : std::sin(kPi * x) / (kPi * x);
            const double window = 0.42 - 0.5 * std::cos(2 * kPi * (m + 0.5) / taps) + 0.08 * std::cos(4 * kPi * (m + 0.5) / taps);
            row[k] = sinc * window;
            sum += row[k];
        }
        for (int k = 0; k < kTapsPerPhase; ++k)
            interpolator[k][p] = oversampling > 1 ? static_cast<float>(row[k] / sum) : 0.0f;
    }
    for (ChannelState& state : channels)
        state.history.assign(2 * kTapsPerPhase, 0.0f);
}

// The highest magnitude of a run of one channel's samples and of the
// values between them. The filter's history is kept twice over, so that the
// last kTapsPerPhase samples, newest first, always lie side by side; each
// tap multiplies all four phases at once, in floats, which the compiler
// does in one vector operation.
float LoudnessMeter::TruePeakOf(ChannelState& state, const float* samples, std::size_t count, std::size_t stride) const
{
    // The four phases of a tap are one vector of the compiler's own (both
    // compilers of this program know the form), and four partial sums over
    // the taps keep four independent chains of additions in flight.
    using Lanes = float __attribute__((vector_size(16)));
    Lanes taps[kTapsPerPhase];
    for (int k = 0; k < kTapsPerPhase; ++k)
        taps[k] = Lanes{interpolator[k][0], interpolator[k][1], interpolator[k][2], interpolator[k][3]};
    float peak = 0;
    float* history = state.history.data();
    int next = state.next;
    for (std::size_t i = 0; i < count; ++i) {
        const float sample = samples[i * stride];
        next = next == 0 ? kTapsPerPhase - 1 : next - 1;
        history[next] = sample;
        history[next + kTapsPerPhase] = sample;
        const float* recent = history + next;
        Lanes a = taps[0] * recent[0], b = taps[1] * recent[1], c = taps[2] * recent[2], d = taps[3] * recent[3];
        for (int k = 4; k < kTapsPerPhase; k += 4) {
            a += taps[k] * recent[k];
            b += taps[k + 1] * recent[k + 1];
            c += taps[k + 2] * recent[k + 2];
            d += taps[k + 3] * recent[k + 3];
        }
        const Lanes values = (a + b) + (c + d);
        const Lanes squares = values * values;
        float highest = sample * sample;
        for (int p = 0; p < kPhases; ++p)
            highest = highest < squares[p] ? squares[p] : highest;
        peak = peak < highest ? highest : peak;
    }
    state.next = next;
    return std::sqrt(peak);
}

// The K-weighting of a run of one channel's samples, adding their squares
// to the channel's energy of the current step.
void LoudnessMeter::Filter(ChannelState& state, const float* samples, std::size_t count, std::size_t stride) const
{
    double z0 = state.z[0], z1 = state.z[1], z2 = state.z[2], z3 = state.z[3], energy = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double x = samples[i * stride];
        const double y1 = shelf.b0 * x + z0;
        z0 = shelf.b1 * x - shelf.a1 * y1 + z1;
        z1 = shelf.b2 * x - shelf.a2 * y1;
        const double y2 = highPass.b0 * y1 + z2;
        z2 = highPass.b1 * y1 - highPass.a1 * y2 + z3;
        z3 = highPass.b2 * y1 - highPass.a2 * y2;
        energy += y2 * y2;
    }
    state.z[0] = z0;
    state.z[1] = z1;
    state.z[2] = z2;
    state.z[3] = z3;
    state.blockEnergy += energy;
}

// Frames go through channel by channel, a step of 100 ms at most at a time.
void LoudnessMeter::Add(const float* frames, std::size_t frameCount)
{
    const std::size_t count = channels.size();
    while (frameCount > 0) {
        const std::size_t run = std::min<std::size_t>(frameCount, stepFrames - framesInStep);
        for (std::size_t c = 0; c < count; ++c) {
            Filter(channels[c], frames + c, run, count);
            channels[c].truePeak = std::max<double>(channels[c].truePeak, TruePeakOf(channels[c], frames + c, run, count));
        }
        frames += run * count;
        frameCount -= run;
        framesInStep += static_cast<std::uint32_t>(run);
        if (framesInStep == stepFrames)
            EndOfStep();
    }
}

// Every 100 ms: the step's weighted energy joins the last 30; a block of
// 400 ms (four steps, overlapping by three) goes to the gating, and once 3 s
// have passed a short-term value goes to the loudness range.
void LoudnessMeter::EndOfStep()
{
    double energy = 0;
    for (std::size_t c = 0; c < channels.size(); ++c) {
        energy += weights[c] * channels[c].blockEnergy;
        channels[c].blockEnergy = 0;
    }
    steps[stepCount % steps.size()] = energy;
    ++stepCount;
    framesInStep = 0;
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
    for (const ChannelState& state : channels)
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
}

double LoudnessMeter::Histogram::MeanAbove(double loudness, std::uint64_t& count) const
{
    double sum = 0;
    count = 0;
    for (int bin = std::max(0, Bin(loudness)); bin < kBins; ++bin) {
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
    for (int bin = first; bin < kBins; ++bin)
        total += counts[bin];
    if (total == 0)
        return 0;
    const auto wanted = static_cast<std::uint64_t>(std::ceil(share * static_cast<double>(total)));
    std::uint64_t seen = 0;
    for (int bin = first; bin < kBins; ++bin) {
        seen += counts[bin];
        if (seen >= std::max<std::uint64_t>(1, wanted))
            return kAbsoluteGate + (bin + 0.5) / 100;
    }
    return kAbsoluteGate + kBins / 100.0;
}
