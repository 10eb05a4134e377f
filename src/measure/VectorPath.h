#pragma once

#include <cstddef>

// The inner loops of the loudness meter, the K-weighting and the
// true-peak filter, built twice: for any x86 processor (SSE2 at most), and
// for those with AVX2 and FMA, which take twice the instants of the
// true-peak filter at once and fuse the filters' multiplications with
// their additions. The wide path is chosen once per run where the
// processor has both; its figures differ from the plain path's in the last
// bits only (a fused multiply-add rounds once where the plain path rounds
// twice). Plain functions, for any thread.
enum class VectorPath { Plain, Wide };

// Wide where the processor running this has AVX2 and FMA, else plain.
VectorPath BestVectorPath();
// "avx2+fma" or "plain", as sondara-check --version names them.
const char* VectorPathName(VectorPath path);

// A biquad's coefficients, a0 being 1.
struct Biquad {
    double b0, b1, b2, a1, a2;
};

// One channel's state of the K-weighting (a high shelf, then a high pass)
// and the energy of its current step.
struct KWeightingState {
    double z[4] = {}; // the two filters' states
    double stepEnergy = 0;
};

// The K-weighting of count samples, stride apart, adding their squares to
// the channel's step energy; KWeightTwo does two neighbouring channels at
// once (samples[i * stride] and samples[i * stride + 1]).
void KWeightOne(VectorPath path, const Biquad& shelf, const Biquad& highPass, KWeightingState& state,
                const float* samples, std::size_t count, std::size_t stride);
void KWeightTwo(VectorPath path, const Biquad& shelf, const Biquad& highPass, KWeightingState& first,
                KWeightingState& second, const float* samples, std::size_t count, std::size_t stride);

// The true-peak filter's taps: kTruePeakTaps a phase, each tap's phases
// side by side, phases unused zero.
constexpr int kTruePeakTaps = 12;
constexpr int kTruePeakPhases = 3;
using TruePeakTaps = float[kTruePeakTaps][kTruePeakPhases];

// The highest square of the samples x[0] to x[count - 1] and of the values
// between each and the one before; x[-1] to x[-(kTruePeakTaps - 1)] are
// the samples before them.
float HighestSquare(VectorPath path, const TruePeakTaps& taps, const float* x, std::size_t count);
