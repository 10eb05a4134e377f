#include "measure/ClippingRunMeter.h"

#include "measure/ChannelSamples.h"
#include "measure/CodeLanes.h"
#include "measure/CodeSpans.h"

#include <algorithm>
#include <cmath>

ClippingRunMeter::ClippingRunMeter(const SampleFormat& format, const MeterSettings& settings)
    : format(format), shortestRun(std::max<std::uint32_t>(1, settings.clippingRun)), path(BestVectorPath()),
      channels(format.channels)
{
}

void ClippingRunMeter::EndRun(Channel& channel) const
{
    channel.figures.longest = std::max(channel.figures.longest, channel.runLength);
    channel.figures.runs += channel.runLength >= shortestRun;
    channel.runLength = 0;
}

// Most samples lie below the peak with no run under way: eight at a time
// go through comparisons without branches, and such a group is passed by.
template <typename Samples>
void ClippingRunMeter::AddChannel(const Samples& view, Channel& channel) const
{
    // A copy, so that the compiler keeps it in registers across the writes
    // to the channel.
    const Samples samples = view;
    const auto add = [&](double v) {
        const double magnitude = std::fabs(v);
        if (magnitude < channel.peak) {
            if (channel.runLength > 0)
                EndRun(channel);
            return;
        }
        if (magnitude > channel.peak) {
            // A new peak: the runs at the old one were below it.
            channel.peak = magnitude;
            channel.figures = {};
            channel.runLength = 0;
        } else if (channel.runLength > 0 && v == channel.runValue) {
            ++channel.runLength;
            return;
        } else if (channel.runLength > 0) {
            EndRun(channel); // the other sign of the peak
        }
        channel.runValue = v;
        channel.runLength = 1;
    };
    constexpr std::uint32_t kGroup = 8;
    std::uint32_t i = 0;
    for (; i + kGroup <= samples.count; i += kGroup) {
        if (channel.runLength == 0) {
            bool reaches = false;
            for (std::uint32_t j = 0; j < kGroup; ++j)
                reaches |= !(std::fabs(samples[i + j]) < channel.peak);
            if (!reaches)
                continue;
        }
        for (std::uint32_t j = i; j < i + kGroup; ++j)
            add(samples[j]);
    }
    for (; i < samples.count; ++i)
        add(samples[i]);
}

// Passes by the packed 16-bit frames from frame at on up to the first that
// holds a code at a channel's peak, while no run is under way. Returns the
// frames passed by.
std::uint32_t ClippingRunMeter::PassByUnchanged(const RawFrames& frames, std::uint32_t at) const
{
    const double scale = std::ldexp(1.0, 1 - static_cast<int>(format.bits));
    MagnitudeRanges ranges;
    for (std::uint32_t c = 0; c < channels.size(); ++c) {
        // The peak is a sample's magnitude, so a code's to the bit; at 0 any
        // sample reaches it.
        const Channel& channel = channels[c];
        if (channel.runLength > 0 || channel.peak == 0)
            return 0;
        ranges.high[c] = static_cast<std::uint16_t>(channel.peak / scale - 1);
    }
    return FramesInRanges(path, frames.data + std::size_t{at} * frames.stride, frames.frames - at,
                          static_cast<std::uint32_t>(channels.size()), ranges);
}

// Packed 16-bit frames go a group at a time through the most
// magnitude of each channel: a channel with no run under way and nothing
// at its peak in the group is passed by, as AddChannel passes it by.
// Returns the frames taken.
std::uint32_t ClippingRunMeter::AddGroups(const RawFrames& frames)
{
    constexpr std::uint32_t kGroupFrames = 16;
    const double scale = std::ldexp(1.0, 1 - static_cast<int>(format.bits));
    const auto count = static_cast<std::uint32_t>(channels.size());
    std::uint32_t at = 0;
    for (; at + kGroupFrames <= frames.frames; at += kGroupFrames) {
        at += PassByUnchanged(frames, at);
        if (at + kGroupFrames > frames.frames)
            break;
        const std::uint8_t* group = frames.data + std::size_t{at} * frames.stride;
        const CodeMagnitudes magnitudes = MagnitudesOf(group, kGroupFrames, count);
        for (std::uint32_t c = 0; c < count; ++c) {
            Channel& channel = channels[c];
            if (channel.runLength == 0 && magnitudes.most[c] * scale < channel.peak)
                continue;
            ViewChannel(format, RawFrames{group, kGroupFrames, frames.stride}, c,
                        [&](const auto& samples) { AddChannel(samples, channel); });
        }
    }
    return at;
}

void ClippingRunMeter::AddBytes(const RawFrames& frames)
{
    std::uint32_t done = 0;
    if (TakesCodeLanes(format))
        done = AddGroups(frames);
    const RawFrames rest{frames.data + std::size_t{done} * frames.stride, frames.frames - done, frames.stride};
    for (std::uint32_t c = 0; c < channels.size(); ++c)
        ViewChannel(format, rest, c, [&](const auto& samples) { AddChannel(samples, channels[c]); });
}

void ClippingRunMeter::Finish(LevelReport& report)
{
    report.settings.clippingRun = shortestRun;
    for (Channel& channel : channels) {
        if (channel.runLength > 0)
            EndRun(channel);
        // A channel of silence has no peak to be clipped at.
        report.clippingRuns.push_back(channel.peak > 0 ? channel.figures : ClippingRuns{});
    }
}
