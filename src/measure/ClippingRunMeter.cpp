#include "measure/ClippingRunMeter.h"

#include "measure/ChannelSamples.h"

#include <algorithm>
#include <cmath>

ClippingRunMeter::ClippingRunMeter(const SampleFormat& format, const MeterSettings& settings)
    : format(format), shortestRun(std::max<std::uint32_t>(1, settings.clippingRun)), channels(format.channels)
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

void ClippingRunMeter::AddBytes(const RawFrames& frames)
{
    for (std::uint32_t c = 0; c < channels.size(); ++c)
        ViewChannel(format, frames, c, [&](const auto& samples) { AddChannel(samples, channels[c]); });
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
