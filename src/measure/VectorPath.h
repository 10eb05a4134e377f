#pragma once

#include <cstddef>
#include <cstdint>

// The inner loops of the loudness meter, the K-weighting and the
// true-peak filter, built for any x86 processor (SSE2 at most), for those
// with AVX2 and FMA, which take twice the lanes at once and fuse the
// filters' multiplications with their additions, and for those with
// AVX-512 too, whose true-peak filter takes sixteen instants at once and
// whose K-weighting takes all its lanes in one vector. The
// widest path the processor has is chosen once per run. The wide and the
// widest paths give the same figures to the last bit; the plain path's
// differ from theirs in the last bits only (a fused multiply-add rounds
// once where the plain path rounds twice). The meters' loops of integer
// codes take AVX2 on either of the two. Plain functions, for any thread.
enum class VectorPath { Plain, Wide, Widest };

// Widest where the processor running this has AVX-512 (F), AVX2 and FMA,
// wide where it has AVX2 and FMA, else plain.
VectorPath BestVectorPath();
// "avx512", "avx2+fma" or "plain", as sondara-check --version names them.
const char* VectorPathName(VectorPath path);

// A biquad's coefficients, a0 being 1.
struct Biquad {
    double b0, b1, b2, a1, a2;
};

// Chains of the K-weighting side by side, one in each lane: each a high
// shelf, then a high pass, with the sum of its output's squares since it
// was last taken.
constexpr std::size_t kWeightingLanes = 8;
struct KWeightingLanes {
    double z[4][kWeightingLanes] = {}; // the two filters' states, lane by lane
    double energy[kWeightingLanes] = {};
};

// count steps of every lane; the high pass's numerator is taken to be
// 1, -2, 1, as the K-weighting's is. The lanes' inputs are frames of channels
// samples (1, 2, 4 or 8), kWeightingLanes / channels runs of them side by
// side: lane l takes sample l % channels of each frame of runs[l / channels].
void KWeightLanes(VectorPath path, const Biquad& shelf, const Biquad& highPass, KWeightingLanes& lanes,
                  const float* const* runs, std::size_t channels, std::size_t count);
// The same of packed 16-bit codes, little-endian, each worth code · 2^-15:
// the figures of their floats to the last bit.
void KWeightCodeLanes(VectorPath path, const Biquad& shelf, const Biquad& highPass, KWeightingLanes& lanes,
                      const std::uint8_t* const* runs, std::size_t channels, std::size_t count);

// The true-peak filter's taps, kTruePeakTaps a phase, folded by their
// symmetry. The filter's phases between samples are mirror images of each
// other: the middle one (halfway) of itself, the other two (a quarter and
// three quarters of the way) of each other, tap k of one being tap 11 - k
// of the other. So the filter adds each sample to its mirror (s) and takes
// it from it (d) first, and then a value halfway is the sum over half the
// taps of middle[k] · s_k, and the two others are P + Q and P - Q, where P
// sums outer[k] · s_k and Q sums skew[k] · d_k. Oversampled twice, the only
// phase between samples is the middle one, and the outer taps are zero.
constexpr int kTruePeakTaps = 12;
constexpr int kTruePeakHalf = kTruePeakTaps / 2;
struct TruePeakTaps {
    float middle[kTruePeakHalf];
    float outer[kTruePeakHalf]; // the mean of a quarter phase's tap k and its tap 11 - k
    float skew[kTruePeakHalf];  // half their difference
};

// The highest square of the samples x[0] to x[count - 1] and of the values
// between each and the one before; x[-1] to x[-(kTruePeakTaps - 1)] are
// the samples before them.
float HighestSquare(VectorPath path, const TruePeakTaps& taps, const float* x, std::size_t count);
