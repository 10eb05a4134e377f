#include "measure/NoiseFloorMeter.h"

#include "measure/ChannelSamples.h"
#include "measure/CodeLanes.h"

#include <algorithm>
#include <cmath>

NoiseFloorMeter::NoiseFloorMeter(const SampleFormat& format)
    : format(format), path(BestVectorPath()), channels(format.channels)
{
    // A tenth of a second, to the nearest frame; a window is five of them.
    stepFrames = std::max<std::uint32_t>(1, static_cast<std::uint32_t>(std::lround(format.sampleRate * kNoiseStepSeconds)));
    // A window's squares of 16-bit codes stay below 2^53 units up to
    // 2^23 frames (a rate of 16 MHz): summed as integers they are exact,
    // and so are the doubles of AddChannel.
    exactCodes = TakesCodeLanes(format) && std::uint64_t{stepFrames} * kNoiseWindowSteps <= (1u << 23);
}

// Takes in the step just ended (the count of steps already includes it) and
// the window that ends with it, once there are enough steps for one.
void NoiseFloorMeter::EndStep(Channel& channel) const
{
    channel.last[(steps - 1) % kNoiseWindowSteps] = channel.current;
    channel.current = {};
    if (steps < kNoiseWindowSteps)
        return;
    // Oldest first, so the sum is the same whatever the steps' places in
    // the ring.
    double squares = 0;
    bool sound = false;
    for (std::uint64_t s = steps - kNoiseWindowSteps; s < steps; ++s) {
        const Step& step = channel.last[s % kNoiseWindowSteps];
        squares += (step.squares[0] + step.squares[1]) + (step.squares[2] + step.squares[3]);
        sound = sound || step.sound;
    }
    if (sound && (channel.quietest < 0 || squares < channel.quietest))
        channel.quietest = squares;
}

template <typename Samples>
void NoiseFloorMeter::AddChannel(const Samples& view, Channel& channel) const
{
    const Samples samples = view;
    Step step = channel.current;
    ForEachInLanes(samples.count, stepDone, [&](std::uint32_t i, auto lane) {
        const double v = samples[i];
        step.squares[lane] += v * v;
        step.sound |= v != 0;
    });
    channel.current = step;
}

namespace {

// Adds each lane's squares of 16-bit codes, and the bits of its codes, over
// rows of Lanes codes from data, to squares and any (Lanes of each).
// Inlined into each path's function, so that each is compiled for its
// processors.
template <std::uint32_t Lanes>
[[gnu::always_inline]] inline void SumCodeSquaresIn(const std::uint8_t* data, std::size_t rows, std::uint64_t* squares,
                                                    std::int32_t* any)
{
    std::uint64_t laneSquares[Lanes] = {};
    std::int32_t laneAny[Lanes] = {};
    for (std::size_t row = 0; row < rows; ++row) {
        const std::uint8_t* at = data + row * Lanes * 2;
        for (std::uint32_t l = 0; l < Lanes; ++l) {
            const std::int32_t code = SampleAt<2>(at + 2 * l);
            laneSquares[l] += static_cast<std::uint32_t>(code * code);
            laneAny[l] |= code;
        }
    }
    for (std::uint32_t l = 0; l < Lanes; ++l) {
        squares[l] += laneSquares[l];
        any[l] |= laneAny[l];
    }
}

// Sixteen lanes at once on the wide path: lane l + kCodeLanes holds the
// channel of lane l.
[[gnu::target("avx2")]] void SumCodeSquaresWide(const std::uint8_t* data, std::size_t rows, std::uint64_t* squares,
                                                std::int32_t* any)
{
    SumCodeSquaresIn<2 * kCodeLanes>(data, rows, squares, any);
}

} // namespace

// The same sums of packed 16-bit frames, all channels at once, as
// integers: the same figures to the bit (see the constructor).
void NoiseFloorMeter::AddCodes(const RawFrames& part)
{
    const auto count = static_cast<std::uint32_t>(channels.size());
    const std::size_t samples = std::size_t{part.frames} * count;
    std::uint64_t squares[2 * kCodeLanes] = {};
    std::int32_t any[2 * kCodeLanes] = {};
    SplitCodeRows(
        path != VectorPath::Plain, part.data, samples,
        [&](const std::uint8_t* from, std::size_t rows) { SumCodeSquaresWide(from, rows, squares, any); },
        [&](const std::uint8_t* from, std::size_t rows) { SumCodeSquaresIn<kCodeLanes>(from, rows, squares, any); },
        [&](std::size_t i) {
            const std::int32_t code = SampleAt<2>(part.data + 2 * i);
            squares[i % kCodeLanes] += static_cast<std::uint32_t>(code * code);
            any[i % kCodeLanes] |= code;
        });
    for (std::uint32_t l = 0; l < 2 * kCodeLanes; ++l) {
        Step& step = channels[l % count].current;
        step.squares[0] += std::ldexp(static_cast<double>(squares[l]), -30);
        step.sound = step.sound || any[l] != 0;
    }
}

// A block is cut where steps end, so that the loop over a channel's samples
// is the plain sum of squares.
void NoiseFloorMeter::AddBytes(const RawFrames& frames)
{
    CutAtSteps(
        frames, stepFrames, stepDone,
        [&](const RawFrames& part) {
            if (exactCodes)
                return AddCodes(part);
            for (std::uint32_t c = 0; c < channels.size(); ++c)
                ViewChannel(format, part, c, [&](const auto& samples) { AddChannel(samples, channels[c]); });
        },
        [&] {
            ++steps;
            for (Channel& channel : channels)
                EndStep(channel);
        });
}

void NoiseFloorMeter::Finish(LevelReport& report)
{
    const double windowFrames = static_cast<double>(stepFrames) * kNoiseWindowSteps;
    report.noiseWindowFrames = static_cast<std::int64_t>(stepFrames) * kNoiseWindowSteps;
    report.noiseStepFrames = stepFrames;
    for (const Channel& channel : channels) {
        if (channel.quietest < 0)
            report.noiseFloor.push_back(std::nullopt);
        else
            report.noiseFloor.push_back(std::sqrt(channel.quietest / windowFrames));
    }
}
