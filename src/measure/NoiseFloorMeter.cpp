#include "measure/NoiseFloorMeter.h"

#include "measure/ChannelSamples.h"
#include "measure/CodeLanes.h"

#include <algorithm>
#include <cmath>

NoiseFloorMeter::NoiseFloorMeter(const SampleFormat& format)
    : format(format), channels(format.channels)
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

// The same sums of packed 16-bit frames, all channels at once, as
// integers: the same figures to the bit (see the constructor).
void NoiseFloorMeter::AddCodes(const RawFrames& part)
{
    const auto count = static_cast<std::uint32_t>(channels.size());
    const std::size_t samples = std::size_t{part.frames} * count, rows = samples / kCodeLanes;
    std::uint64_t squares[kCodeLanes] = {};
    std::int32_t any[kCodeLanes] = {};
    const auto add = [&](std::uint32_t l, std::int32_t code) {
        squares[l] += static_cast<std::uint32_t>(code * code);
        any[l] |= code;
    };
    for (std::size_t row = 0; row < rows; ++row) {
        std::int16_t codes[kCodeLanes];
        LoadCodes(part.data + row * sizeof codes, codes);
        for (std::uint32_t l = 0; l < kCodeLanes; ++l)
            add(l, codes[l]);
    }
    for (std::size_t i = rows * kCodeLanes; i < samples; ++i)
        add(i % kCodeLanes, SampleAt<2>(part.data + 2 * i));
    for (std::uint32_t l = 0; l < kCodeLanes; ++l) {
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
