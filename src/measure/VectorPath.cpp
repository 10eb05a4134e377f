#include "measure/VectorPath.h"

#include <algorithm>
#include <cstring>

namespace {

// The lanes of each path's true-peak filter, and their masks.
using FourFloats = float __attribute__((vector_size(16)));
using FourMasks = int __attribute__((vector_size(16)));
using EightFloats = float __attribute__((vector_size(32)));
using EightMasks = int __attribute__((vector_size(32)));

// The true-peak filter over neighbouring instants, Width instants at once, one in
// each lane of a vector of the compiler's own (both compilers of this
// program know the form), each tap's phases weighing the same samples. Two
// partial sums per phase keep more chains of additions in flight. Taken
// Width at a time the instants need no sums across lanes, which cost more
// than the filter itself did when the lanes were the phases. Inlined into
// each path's function, so that each is compiled for its processors.
template <typename Lanes, typename Mask>
[[gnu::always_inline]] inline float HighestSquareIn(const TruePeakTaps& taps, const float* x, std::size_t count)
{
    constexpr int Width = sizeof(Lanes) / sizeof(float);
    // Vectors go in and out by reference: the 32-bit build has no vector
    // registers to pass them in.
    const auto load = [](Lanes& lanes, const float* from) { std::memcpy(&lanes, from, sizeof lanes); };
    const auto keepLarger = [](Lanes& peak, const Lanes& value) {
        const Mask larger = value > peak;
        peak = reinterpret_cast<Lanes>((reinterpret_cast<Mask>(value) & larger) | (reinterpret_cast<Mask>(peak) & ~larger));
    };
    // Each tap's weight of each phase, in all lanes.
    Lanes weight[kTruePeakTaps][kTruePeakPhases];
    for (int k = 0; k < kTruePeakTaps; ++k)
        for (int p = 0; p < kTruePeakPhases; ++p)
            weight[k][p] = Lanes{} + taps[k][p];
    Lanes peaks{};
    std::size_t i = 0;
    for (; i + Width <= count; i += Width) {
        const float* at = x + i;
        // The phases by name, so that the sums stay in registers.
        Lanes even0{}, even1{}, even2{}, odd0{}, odd1{}, odd2{};
        for (int k = 0; k < kTruePeakTaps; k += 2) {
            Lanes near, far;
            load(near, at - k);
            load(far, at - k - 1);
            even0 += weight[k][0] * near;
            even1 += weight[k][1] * near;
            even2 += weight[k][2] * near;
            odd0 += weight[k + 1][0] * far;
            odd1 += weight[k + 1][1] * far;
            odd2 += weight[k + 1][2] * far;
        }
        Lanes own;
        load(own, at);
        const Lanes phase0 = even0 + odd0, phase1 = even1 + odd1, phase2 = even2 + odd2;
        keepLarger(peaks, own * own);
        keepLarger(peaks, phase0 * phase0);
        keepLarger(peaks, phase1 * phase1);
        keepLarger(peaks, phase2 * phase2);
    }
    float peak = 0;
    for (int lane = 0; lane < Width; ++lane)
        peak = peak < peaks[lane] ? peaks[lane] : peak;
    // The last few instants of a run, one at a time.
    for (; i < count; ++i) {
        const float* at = x + i;
        peak = std::max(peak, at[0] * at[0]);
        for (int p = 0; p < kTruePeakPhases; ++p) {
            float value = 0;
            for (int k = 0; k < kTruePeakTaps; ++k)
                value += taps[k][p] * at[-k];
            peak = std::max(peak, value * value);
        }
    }
    return peak;
}

// One channel's K-weighting; each sample's filter waits on the one before.
[[gnu::always_inline]] inline void KWeightOneIn(const Biquad& shelf, const Biquad& highPass, KWeightingState& state,
                                                const float* samples, std::size_t count, std::size_t stride)
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
    state.stepEnergy += energy;
}

// Two neighbouring channels at once, one in each lane of a vector of the
// compiler's own: a channel alone leaves the processor mostly idle, and a
// second channel's chain runs in the same instructions. Lane by lane the
// arithmetic is KWeightOneIn's, so the figures are the same to the last
// bit.
[[gnu::always_inline]] inline void KWeightTwoIn(const Biquad& shelf, const Biquad& highPass, KWeightingState& first,
                                                KWeightingState& second, const float* samples, std::size_t count,
                                                std::size_t stride)
{
    using Lanes = double __attribute__((vector_size(16)));
    const Lanes sb0 = Lanes{} + shelf.b0, sb1 = Lanes{} + shelf.b1, sb2 = Lanes{} + shelf.b2,
                sa1 = Lanes{} + shelf.a1, sa2 = Lanes{} + shelf.a2;
    const Lanes hb0 = Lanes{} + highPass.b0, hb1 = Lanes{} + highPass.b1, hb2 = Lanes{} + highPass.b2,
                ha1 = Lanes{} + highPass.a1, ha2 = Lanes{} + highPass.a2;
    Lanes z0{first.z[0], second.z[0]}, z1{first.z[1], second.z[1]}, z2{first.z[2], second.z[2]},
        z3{first.z[3], second.z[3]}, energy{0, 0};
    for (std::size_t i = 0; i < count; ++i) {
        const Lanes x{samples[i * stride], samples[i * stride + 1]};
        const Lanes y1 = sb0 * x + z0;
        z0 = sb1 * x - sa1 * y1 + z1;
        z1 = sb2 * x - sa2 * y1;
        const Lanes y2 = hb0 * y1 + z2;
        z2 = hb1 * y1 - ha1 * y2 + z3;
        z3 = hb2 * y1 - ha2 * y2;
        energy += y2 * y2;
    }
    for (int lane = 0; lane < 2; ++lane) {
        KWeightingState& state = lane == 0 ? first : second;
        state.z[0] = z0[lane];
        state.z[1] = z1[lane];
        state.z[2] = z2[lane];
        state.z[3] = z3[lane];
        state.stepEnergy += energy[lane];
    }
}

// The wide path: the same loops compiled for AVX2 and FMA, the true-peak
// filter eight instants at once.
[[gnu::target("avx2,fma")]] float HighestSquareWide(const TruePeakTaps& taps, const float* x, std::size_t count)
{
    return HighestSquareIn<EightFloats, EightMasks>(taps, x, count);
}

[[gnu::target("avx2,fma")]] void KWeightOneWide(const Biquad& shelf, const Biquad& highPass, KWeightingState& state,
                                                const float* samples, std::size_t count, std::size_t stride)
{
    KWeightOneIn(shelf, highPass, state, samples, count, stride);
}

[[gnu::target("avx2,fma")]] void KWeightTwoWide(const Biquad& shelf, const Biquad& highPass, KWeightingState& first,
                                                KWeightingState& second, const float* samples, std::size_t count,
                                                std::size_t stride)
{
    KWeightTwoIn(shelf, highPass, first, second, samples, count, stride);
}

} // namespace

VectorPath BestVectorPath()
{
    static const VectorPath best = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? VectorPath::Wide : VectorPath::Plain;
    }();
    return best;
}

const char* VectorPathName(VectorPath path)
{
    return path == VectorPath::Wide ? "avx2+fma" : "plain";
}

void KWeightOne(VectorPath path, const Biquad& shelf, const Biquad& highPass, KWeightingState& state,
                const float* samples, std::size_t count, std::size_t stride)
{
    if (path == VectorPath::Wide)
        KWeightOneWide(shelf, highPass, state, samples, count, stride);
    else
        KWeightOneIn(shelf, highPass, state, samples, count, stride);
}

void KWeightTwo(VectorPath path, const Biquad& shelf, const Biquad& highPass, KWeightingState& first,
                KWeightingState& second, const float* samples, std::size_t count, std::size_t stride)
{
    if (path == VectorPath::Wide)
        KWeightTwoWide(shelf, highPass, first, second, samples, count, stride);
    else
        KWeightTwoIn(shelf, highPass, first, second, samples, count, stride);
}

float HighestSquare(VectorPath path, const TruePeakTaps& taps, const float* x, std::size_t count)
{
    return path == VectorPath::Wide ? HighestSquareWide(taps, x, count) : HighestSquareIn<FourFloats, FourMasks>(taps, x, count);
}
