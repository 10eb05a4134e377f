#include "measure/VectorPath.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace {

// The lanes of each path's true-peak filter.
using FourFloats = float __attribute__((vector_size(16)));
using EightFloats = float __attribute__((vector_size(32)));
using SixteenFloats = float __attribute__((vector_size(64)));
// The lanes of each path's K-weighting, and their inputs.
using TwoFloats = float __attribute__((vector_size(8)));
using TwoCodes = std::int16_t __attribute__((vector_size(4)));
using FourCodes = std::int16_t __attribute__((vector_size(8)));
using TwoInts = std::int32_t __attribute__((vector_size(8)));
using FourInts = std::int32_t __attribute__((vector_size(16)));
using EightCodes = std::int16_t __attribute__((vector_size(16)));
using EightInts = std::int32_t __attribute__((vector_size(32)));
using EightDoubles = double __attribute__((vector_size(64)));
using TwoDoubles = double __attribute__((vector_size(16)));
using FourDoubles = double __attribute__((vector_size(32)));

// The true-peak filter over neighbouring instants, Width instants at once,
// one in each lane of a vector of the compiler's own (both compilers of
// this program know the form): taken Width at a time the instants need no
// sums across lanes. The taps folded by their symmetry (see TruePeakTaps)
// ask half the multiplications of the plain sums, and their additions go
// to the processor's adders while the multipliers are busy. Inlined into
// each path's function, so that each is compiled for its processors.
template <typename Lanes>
[[gnu::always_inline]] inline float HighestSquareIn(const TruePeakTaps& taps, const float* x, std::size_t count)
{
    constexpr int Width = sizeof(Lanes) / sizeof(float);
    // Vectors go in and out by reference: the 32-bit build has no vector
    // registers to pass them in.
    const auto load = [](Lanes& lanes, const float* from) { std::memcpy(&lanes, from, sizeof lanes); };
    // Lane by lane the larger: one instruction of either path.
    const auto larger = [](Lanes& into, const Lanes& a, const Lanes& b) { into = a > b ? a : b; };
    // Each tap in all lanes.
    Lanes middle[kTruePeakHalf], outer[kTruePeakHalf], skew[kTruePeakHalf];
    for (int k = 0; k < kTruePeakHalf; ++k) {
        middle[k] = Lanes{} + taps.middle[k];
        outer[k] = Lanes{} + taps.outer[k];
        skew[k] = Lanes{} + taps.skew[k];
    }
    Lanes peaks{};
    std::size_t i = 0;
    for (; i + Width <= count; i += Width) {
        const float* at = x + i;
        Lanes own, halfway{}, sums{}, differences{};
        load(own, at);
        for (int k = 0; k < kTruePeakHalf; ++k) {
            Lanes near, far;
            load(near, at - k);
            load(far, at - (kTruePeakTaps - 1) + k);
            const Lanes sum = near + far, difference = near - far;
            halfway += middle[k] * sum;
            sums += outer[k] * sum;
            differences += skew[k] * difference;
        }
        const Lanes quarter = sums + differences, threeQuarters = sums - differences;
        Lanes first, second;
        larger(first, own * own, halfway * halfway);
        larger(second, quarter * quarter, threeQuarters * threeQuarters);
        larger(first, first, second);
        larger(peaks, peaks, first);
    }
    float peak = 0;
    for (int lane = 0; lane < Width; ++lane)
        peak = peak < peaks[lane] ? peaks[lane] : peak;
    // The last few instants of a run, one at a time.
    for (; i < count; ++i) {
        const float* at = x + i;
        float halfway = 0, sums = 0, differences = 0;
        for (int k = 0; k < kTruePeakHalf; ++k) {
            const float near = at[-k], far = at[-(kTruePeakTaps - 1) + k];
            halfway += taps.middle[k] * (near + far);
            sums += taps.outer[k] * (near + far);
            differences += taps.skew[k] * (near - far);
        }
        const float quarter = sums + differences, threeQuarters = sums - differences;
        peak = std::max({peak, at[0] * at[0], halfway * halfway, quarter * quarter, threeQuarters * threeQuarters});
    }
    return peak;
}

// Every lane's K-weighting, Width lanes to a vector of the compiler's own.
// Each chain waits on its last output, so the lanes are many, and each
// filter adds its input's part to the next state before the output is
// known: then a step waits on two operations of the chain before it, not
// three. A vector's inputs are read a frame at a time, from as many runs as
// it spans (or part of a frame, where a frame spans vectors): floats, or
// 16-bit codes (Inputs of std::int16_t), which are worth code · 2^-15 as
// their floats are, exactly.
template <typename Lanes, typename Inputs, typename Ints, std::size_t Channels>
[[gnu::always_inline]] inline void KWeightLanesIn(const Biquad& shelf, const Biquad& highPass, KWeightingLanes& lanes,
                                                  const std::uint8_t* const* runs, std::size_t count)
{
    using Sample = std::remove_reference_t<decltype(Inputs{}[0])>;
    constexpr std::size_t Width = sizeof(Lanes) / sizeof(double);
    constexpr std::size_t Vectors = kWeightingLanes / Width;
    constexpr std::size_t Piece = Channels < Width ? Channels : Width; // samples a read
    const std::uint8_t* from[kWeightingLanes / Channels];
    for (std::size_t r = 0; r < kWeightingLanes / Channels; ++r)
        from[r] = runs[r];
    const Lanes sb0 = Lanes{} + shelf.b0, sb1 = Lanes{} + shelf.b1, sb2 = Lanes{} + shelf.b2,
                sa1 = Lanes{} + shelf.a1, sa2 = Lanes{} + shelf.a2;
    const Lanes ha1 = Lanes{} + highPass.a1, ha2 = Lanes{} + highPass.a2;
    Lanes z0[Vectors], z1[Vectors], z2[Vectors], z3[Vectors], energy[Vectors];
    for (std::size_t v = 0; v < Vectors; ++v) {
        std::memcpy(&z0[v], &lanes.z[0][v * Width], sizeof(Lanes));
        std::memcpy(&z1[v], &lanes.z[1][v * Width], sizeof(Lanes));
        std::memcpy(&z2[v], &lanes.z[2][v * Width], sizeof(Lanes));
        std::memcpy(&z3[v], &lanes.z[3][v * Width], sizeof(Lanes));
        std::memcpy(&energy[v], &lanes.energy[v * Width], sizeof(Lanes));
    }
    for (std::size_t i = 0; i < count; ++i) {
        // Unrolled, so that the states stay in registers.
#pragma GCC unroll 4
        for (std::size_t v = 0; v < Vectors; ++v) {
            Sample samples[Width];
#pragma GCC unroll 8
            for (std::size_t l = 0; l < Width; l += Piece) {
                const std::size_t lane = v * Width + l;
                std::memcpy(samples + l, from[lane / Channels] + (i * Channels + lane % Channels) * sizeof(Sample),
                            Piece * sizeof(Sample));
            }
            Inputs in;
            std::memcpy(&in, samples, sizeof in);
            Lanes input;
            if constexpr (std::is_integral_v<Sample>) {
                // Codes widen to 32 bits first: a vector the processor
                // converts to doubles in one instruction.
                const Ints wide = __builtin_convertvector(in, Ints);
                input = __builtin_convertvector(wide, Lanes) * (1.0 / 32768);
            } else {
                input = __builtin_convertvector(in, Lanes);
            }
            const Lanes y1 = sb0 * input + z0[v];
            z0[v] = (sb1 * input + z1[v]) - sa1 * y1;
            z1[v] = sb2 * input - sa2 * y1;
            // The high pass's numerator is 1, -2, 1: its products are
            // additions, exact where they stand for a product, which leaves
            // the multipliers to the other terms.
            const Lanes y2 = y1 + z2[v];
            z2[v] = (z3[v] - (y1 + y1)) - ha1 * y2;
            z3[v] = y1 - ha2 * y2;
            energy[v] += y2 * y2;
        }
    }
    for (std::size_t v = 0; v < Vectors; ++v) {
        std::memcpy(&lanes.z[0][v * Width], &z0[v], sizeof(Lanes));
        std::memcpy(&lanes.z[1][v * Width], &z1[v], sizeof(Lanes));
        std::memcpy(&lanes.z[2][v * Width], &z2[v], sizeof(Lanes));
        std::memcpy(&lanes.z[3][v * Width], &z3[v], sizeof(Lanes));
        std::memcpy(&lanes.energy[v * Width], &energy[v], sizeof(Lanes));
    }
}

// The wide path: the same loops compiled for AVX2 and FMA, the true-peak
// filter eight instants at once.
[[gnu::target("avx2,fma")]] float HighestSquareWide(const TruePeakTaps& taps, const float* x, std::size_t count)
{
    return HighestSquareIn<EightFloats>(taps, x, count);
}

// The widest path: the true-peak filter sixteen instants at once.
[[gnu::target("avx512f,avx2,fma")]] float HighestSquareWidest(const TruePeakTaps& taps, const float* x, std::size_t count)
{
    return HighestSquareIn<SixteenFloats>(taps, x, count);
}

template <std::size_t Channels, bool Codes>
[[gnu::target("avx2,fma")]] void KWeightLanesWide(const Biquad& shelf, const Biquad& highPass, KWeightingLanes& lanes,
                                                  const std::uint8_t* const* runs, std::size_t count)
{
    KWeightLanesIn<FourDoubles, std::conditional_t<Codes, FourCodes, FourFloats>, FourInts, Channels>(
        shelf, highPass, lanes, runs, count);
}

// The widest path: all eight lanes in one vector, lane by lane the wide
// path's arithmetic.
template <std::size_t Channels, bool Codes>
[[gnu::target("avx512f,avx2,fma")]] void KWeightLanesWidest(const Biquad& shelf, const Biquad& highPass,
                                                            KWeightingLanes& lanes, const std::uint8_t* const* runs,
                                                            std::size_t count)
{
    KWeightLanesIn<EightDoubles, std::conditional_t<Codes, EightCodes, EightFloats>, EightInts, Channels>(
        shelf, highPass, lanes, runs, count);
}

template <std::size_t Channels, bool Codes>
void KWeightLanesPlain(const Biquad& shelf, const Biquad& highPass, KWeightingLanes& lanes,
                       const std::uint8_t* const* runs, std::size_t count)
{
    KWeightLanesIn<TwoDoubles, std::conditional_t<Codes, TwoCodes, TwoFloats>, TwoInts, Channels>(shelf, highPass, lanes,
                                                                                                 runs, count);
}

// The filter of each path for frames of 1, 2, 4 or 8 channels, floats or
// codes.
template <bool Codes>
void KWeightLanesOf(VectorPath path, const Biquad& shelf, const Biquad& highPass, KWeightingLanes& lanes,
                    const std::uint8_t* const* runs, std::size_t channels, std::size_t count)
{
    using Filter = void (*)(const Biquad&, const Biquad&, KWeightingLanes&, const std::uint8_t* const*, std::size_t);
    static constexpr Filter wide[] = {KWeightLanesWide<1, Codes>, KWeightLanesWide<2, Codes>,
                                      KWeightLanesWide<4, Codes>, KWeightLanesWide<8, Codes>};
    static constexpr Filter plain[] = {KWeightLanesPlain<1, Codes>, KWeightLanesPlain<2, Codes>,
                                       KWeightLanesPlain<4, Codes>, KWeightLanesPlain<8, Codes>};
    const std::size_t form = channels == 1 ? 0 : channels == 2 ? 1 : channels == 4 ? 2 : 3;
    static constexpr Filter widest[] = {KWeightLanesWidest<1, Codes>, KWeightLanesWidest<2, Codes>,
                                        KWeightLanesWidest<4, Codes>, KWeightLanesWidest<8, Codes>};
    const Filter* filters = path == VectorPath::Widest ? widest : path == VectorPath::Wide ? wide : plain;
    filters[form](shelf, highPass, lanes, runs, count);
}

} // namespace

VectorPath BestVectorPath()
{
    static const VectorPath best = [] {
        __builtin_cpu_init();
        if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma"))
            return VectorPath::Plain;
        return __builtin_cpu_supports("avx512f") ? VectorPath::Widest : VectorPath::Wide;
    }();
    return best;
}

const char* VectorPathName(VectorPath path)
{
    return path == VectorPath::Widest ? "avx512" : path == VectorPath::Wide ? "avx2+fma" : "plain";
}

void KWeightLanes(VectorPath path, const Biquad& shelf, const Biquad& highPass, KWeightingLanes& lanes,
                  const float* const* runs, std::size_t channels, std::size_t count)
{
    const std::uint8_t* bytes[kWeightingLanes];
    for (std::size_t r = 0; r < kWeightingLanes / channels; ++r)
        bytes[r] = reinterpret_cast<const std::uint8_t*>(runs[r]);
    KWeightLanesOf<false>(path, shelf, highPass, lanes, bytes, channels, count);
}

void KWeightCodeLanes(VectorPath path, const Biquad& shelf, const Biquad& highPass, KWeightingLanes& lanes,
                      const std::uint8_t* const* runs, std::size_t channels, std::size_t count)
{
    KWeightLanesOf<true>(path, shelf, highPass, lanes, runs, channels, count);
}

float HighestSquare(VectorPath path, const TruePeakTaps& taps, const float* x, std::size_t count)
{
    switch (path) {
    case VectorPath::Widest: return HighestSquareWidest(taps, x, count);
    case VectorPath::Wide: return HighestSquareWide(taps, x, count);
    case VectorPath::Plain: break;
    }
    return HighestSquareIn<FourFloats>(taps, x, count);
}
