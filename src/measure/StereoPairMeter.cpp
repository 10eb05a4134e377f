#include "measure/StereoPairMeter.h"

#include "measure/ChannelSamples.h"
#include "measure/CodeLanes.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

// Σlr / √(Σl² Σr²), within ±1 whatever the rounding; none when a channel is
// silent. The roots are taken apart, so that the product of two tiny sums
// can't vanish.
std::optional<double> Correlation(double both, double left, double right)
{
    if (left <= 0 || right <= 0)
        return std::nullopt;
    return std::clamp(both / (std::sqrt(left) * std::sqrt(right)), -1.0, 1.0);
}

} // namespace

StereoPairMeter::StereoPairMeter(const SampleFormat& format)
    : format(format), path(BestVectorPath()), pairs(format.channels / 2)
{
    blockFrames = std::max<std::uint32_t>(1, static_cast<std::uint32_t>(std::lround(format.sampleRate * kPairBlockSeconds)));
    // A block's products of 16-bit codes stay below 2^53 units up to 2^23
    // frames: summed as integers they are exact, and so are the doubles of
    // AddPair.
    exactCodes = TakesCodeLanes(format) && format.channels % 2 == 0 && blockFrames <= (1u << 23);
}

StereoPairMeter::Sums StereoPairMeter::Folded(const LaneSums& lanes)
{
    const auto fold = [](const double* lane) { return (lane[0] + lane[1]) + (lane[2] + lane[3]); };
    return {fold(lanes.both), fold(lanes.left), fold(lanes.right)};
}

template <typename Samples>
void StereoPairMeter::AddPair(const Samples& leftView, const Samples& rightView, Pair& pair) const
{
    const Samples left = leftView, right = rightView;
    LaneSums sums = pair.block;
    bool identical = pair.identical, inverse = pair.inverse, sound = pair.sound;
    ForEachInLanes(left.count, blockDone, [&](std::uint32_t i, auto lane) {
        const double l = left[i], r = right[i];
        sums.both[lane] += l * r;
        sums.left[lane] += l * l;
        sums.right[lane] += r * r;
        identical &= l == r;
        inverse &= l == -r;
        sound |= l != 0;
    });
    pair.block = sums;
    pair.identical = identical;
    pair.inverse = inverse;
    pair.sound = sound;
}

namespace {

// Adds each lane's squares over rows of Lanes 16-bit codes from data to
// squares (Lanes of them), and each pair's products of its two lanes to
// both (Lanes / 2 of them). Inlined into each path's function, so that
// each is compiled for its processors.
template <std::uint32_t Lanes>
[[gnu::always_inline]] inline void SumPairCodesIn(const std::uint8_t* data, std::size_t rows, std::int64_t* both,
                                                  std::uint64_t* squares)
{
    std::int64_t pairBoth[Lanes / 2] = {};
    std::uint64_t laneSquares[Lanes] = {};
    for (std::size_t row = 0; row < rows; ++row) {
        const std::uint8_t* at = data + row * Lanes * 2;
        for (std::uint32_t l = 0; l < Lanes; ++l) {
            const std::int32_t code = SampleAt<2>(at + 2 * l);
            laneSquares[l] += static_cast<std::uint32_t>(code * code);
        }
        for (std::uint32_t p = 0; p < Lanes / 2; ++p)
            pairBoth[p] += SampleAt<2>(at + 4 * p) * SampleAt<2>(at + 4 * p + 2);
    }
    for (std::uint32_t l = 0; l < Lanes; ++l)
        squares[l] += laneSquares[l];
    for (std::uint32_t p = 0; p < Lanes / 2; ++p)
        both[p] += pairBoth[p];
}

// Sixteen lanes at once on the wide path: lane l + kCodeLanes holds the
// channel of lane l.
[[gnu::target("avx2")]] void SumPairCodesWide(const std::uint8_t* data, std::size_t rows, std::int64_t* both,
                                              std::uint64_t* squares)
{
    SumPairCodesIn<2 * kCodeLanes>(data, rows, both, squares);
}

} // namespace

// The same sums of packed 16-bit frames, every pair at once, as integers:
// the same figures to the bit (see the constructor). Dual mono and inverse
// need no sums of their own: the squares of l - r and of l + r, Σl² + Σr²
// ∓ 2Σlr, are 0 just when every frame is so.
void StereoPairMeter::AddCodes(const RawFrames& part)
{
    const std::uint32_t count = format.channels;
    const std::size_t samples = std::size_t{part.frames} * count;
    std::int64_t both[kCodeLanes] = {}; // by pair of lanes
    std::uint64_t squares[2 * kCodeLanes] = {};
    SplitCodeRows(
        path != VectorPath::Plain, part.data, samples,
        [&](const std::uint8_t* from, std::size_t rows) { SumPairCodesWide(from, rows, both, squares); },
        [&](const std::uint8_t* from, std::size_t rows) { SumPairCodesIn<kCodeLanes>(from, rows, both, squares); },
        [&](std::size_t i) {
            const std::int32_t code = SampleAt<2>(part.data + 2 * i);
            squares[i % kCodeLanes] += static_cast<std::uint32_t>(code * code);
            if (i % 2 == 0)
                both[i % kCodeLanes / 2] += code * SampleAt<2>(part.data + 2 * i + 2);
        });
    for (std::uint32_t l = 0; l < 2 * kCodeLanes; l += 2) {
        Pair& pair = pairs[l % count / 2];
        const auto left = static_cast<std::int64_t>(squares[l]), right = static_cast<std::int64_t>(squares[l + 1]);
        const std::int64_t product = both[l / 2];
        pair.block.both[0] += std::ldexp(static_cast<double>(product), -30);
        pair.block.left[0] += std::ldexp(static_cast<double>(left), -30);
        pair.block.right[0] += std::ldexp(static_cast<double>(right), -30);
        pair.identical = pair.identical && left + right - 2 * product == 0;
        pair.inverse = pair.inverse && left + right + 2 * product == 0;
        pair.sound = pair.sound || left != 0;
    }
}

// A block is cut where the blocks of the correlation end.
void StereoPairMeter::AddBytes(const RawFrames& frames)
{
    CutAtSteps(
        frames, blockFrames, blockDone,
        [&](const RawFrames& part) {
            if (exactCodes)
                return AddCodes(part);
            for (std::uint32_t p = 0; p < pairs.size(); ++p)
                ViewPair(format, part, 2 * p, [&](const auto& left, const auto& right) { AddPair(left, right, pairs[p]); });
        },
        [&] {
            for (Pair& pair : pairs) {
                const Sums block = Folded(pair.block);
                if (const std::optional<double> correlation = Correlation(block.both, block.left, block.right))
                    pair.lowest = std::min(pair.lowest, *correlation);
                pair.whole = {pair.whole.both + block.both, pair.whole.left + block.left, pair.whole.right + block.right};
                pair.block = {};
            }
        });
}

void StereoPairMeter::Finish(LevelReport& report)
{
    for (std::uint32_t p = 0; p < pairs.size(); ++p) {
        const Pair& pair = pairs[p];
        // The last block, cut short by the end, counts in the whole only.
        const Sums last = Folded(pair.block);
        const Sums whole{pair.whole.both + last.both, pair.whole.left + last.left, pair.whole.right + last.right};
        PairFigures figures;
        figures.first = 2 * p;
        figures.correlation = Correlation(whole.both, whole.left, whole.right);
        if (pair.lowest <= 1)
            figures.lowestBlock = pair.lowest;
        figures.identical = pair.identical;
        figures.inverse = pair.inverse && pair.sound;
        report.pairs.push_back(figures);
    }
}
