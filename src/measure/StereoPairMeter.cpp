#include "measure/StereoPairMeter.h"

#include "measure/ChannelSamples.h"

#include <algorithm>
#include <cmath>

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

// A block is cut where the blocks of the correlation end.
void StereoPairMeter::AddBytes(const RawFrames& frames)
{
    CutAtSteps(
        frames, blockFrames, blockDone,
        [&](const RawFrames& part) {
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
