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

StereoPairMeter::StereoPairMeter(const SampleFormat& format) : format(format), pairs(format.channels / 2)
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

// The same sums of packed 16-bit frames, every pair at once, as integers:
// the same figures to the bit (see the constructor). Lane l's partner is
// lane l ^ 1, the other channel of its pair, found by turning each pair's
// 32 bits by half. Dual mono and inverse need no sums of their own: the
// squares of l - r and of l + r, Σl² + Σr² ∓ 2Σlr, are 0 just when every
// frame is so.
void StereoPairMeter::AddCodes(const RawFrames& part)
{
    const std::uint32_t count = format.channels;
    const std::size_t samples = std::size_t{part.frames} * count, rows = samples / kCodeLanes;
    std::int64_t both[kCodeLanes] = {};
    std::uint64_t squares[kCodeLanes] = {};
    const auto add = [&](std::uint32_t l, std::int32_t code, std::int32_t partner) {
        squares[l] += static_cast<std::uint32_t>(code * code);
        both[l] += code * partner;
    };
    for (std::size_t row = 0; row < rows; ++row) {
        std::int16_t codes[kCodeLanes], partners[kCodeLanes];
        LoadCodes(part.data + row * sizeof codes, codes);
        std::uint32_t turned[kCodeLanes / 2];
        std::memcpy(turned, codes, sizeof turned);
        for (std::uint32_t& pair : turned)
            pair = pair >> 16 | pair << 16;
        std::memcpy(partners, turned, sizeof partners);
        for (std::uint32_t l = 0; l < kCodeLanes; ++l)
            add(l, codes[l], partners[l]);
    }
    for (std::size_t i = rows * kCodeLanes; i < samples; ++i)
        add(i % kCodeLanes, SampleAt<2>(part.data + 2 * i), SampleAt<2>(part.data + 2 * (i ^ 1)));
    // The left channel's lanes hold the products.
    for (std::uint32_t l = 0; l < kCodeLanes; l += 2) {
        Pair& pair = pairs[l % count / 2];
        const auto left = static_cast<std::int64_t>(squares[l]), right = static_cast<std::int64_t>(squares[l + 1]);
        pair.block.both[0] += std::ldexp(static_cast<double>(both[l]), -30);
        pair.block.left[0] += std::ldexp(static_cast<double>(left), -30);
        pair.block.right[0] += std::ldexp(static_cast<double>(right), -30);
        pair.identical = pair.identical && left + right - 2 * both[l] == 0;
        pair.inverse = pair.inverse && left + right + 2 * both[l] == 0;
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
