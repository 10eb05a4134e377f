#include "measure/SilenceMeter.h"

#include "measure/ChannelSamples.h"

#include <algorithm>
#include <cmath>

SilenceMeter::SilenceMeter(const SampleFormat& format, const MeterSettings& settings)
    : format(format), settings(settings), channels(format.channels)
{
    threshold = std::pow(10.0, settings.silenceThresholdDb / 20);
    // A run counts when it lasts at least the minimum: its frames, rounded
    // up, and never fewer than one.
    minimumFrames = std::max<std::int64_t>(
        1, static_cast<std::int64_t>(std::ceil(settings.silenceMinimumMs * format.sampleRate / 1000)));
}

// Only a sample that is not silent does any work beyond the comparison: it
// ends the silent run before it, if there is one. Samples go eight at a
// time through comparisons without branches, and a group that is all
// silence, or all sound right after sound, changes no more than a number.
// Integers are compared as codes with the threshold's code, which is the
// same comparison, full scale being a power of two.
template <typename Samples>
void SilenceMeter::AddChannel(const Samples& view, Channel& channel) const
{
    // Copies, so that the compiler keeps them in registers across the
    // writes to the channel.
    const Samples samples = view;
    const double threshold = this->threshold;
    const std::int64_t codes =
        std::max<std::int64_t>(1, static_cast<std::int64_t>(std::ceil(std::min(threshold / samples.scale, 1099511627776.0))));
    // A code is silent from -(codes - 1) to codes - 1: one unsigned
    // comparison, with no branch on the sign.
    const auto loud = [&](std::uint32_t i) {
        if constexpr (Samples::kInteger)
            return static_cast<std::uint64_t>(samples.Code(i) + codes - 1) > static_cast<std::uint64_t>(2 * codes - 2);
        else
            return !(std::fabs(samples[i]) < threshold);
    };
    const auto zero = [&](std::uint32_t i) {
        if constexpr (Samples::kInteger)
            return samples.Code(i) == 0;
        else
            return samples.Raw(i) == 0;
    };
    const auto sound = [&](std::uint32_t i) {
        const std::int64_t frame = framesBefore + i;
        if (channel.lastSound < 0) {
            channel.firstSound = frame;
        } else if (frame - channel.lastSound > 1) {
            ChannelSilence& figures = channel.figures;
            const std::int64_t length = frame - channel.lastSound - 1;
            figures.longestInside = std::max(figures.longestInside, length);
            if (length >= minimumFrames) {
                ++figures.runs;
                if (figures.runStarts.size() < kMostRunStarts)
                    figures.runStarts.push_back(channel.lastSound + 1);
            }
        }
        channel.lastSound = frame;
    };
    constexpr std::uint32_t kGroup = 8;
    bool nonZero = channel.nonZero;
    std::uint32_t i = 0;
    for (; i + kGroup <= samples.count; i += kGroup) {
        bool anySound = false, allSound = true;
        for (std::uint32_t j = 0; j < kGroup; ++j) {
            const bool isLoud = loud(i + j);
            anySound |= isLoud;
            allSound &= isLoud;
            nonZero |= !zero(i + j);
        }
        if (!anySound)
            continue;
        if (allSound && channel.lastSound >= 0 && channel.lastSound == framesBefore + i - 1) {
            channel.lastSound = framesBefore + i + kGroup - 1;
            continue;
        }
        for (std::uint32_t j = i; j < i + kGroup; ++j) {
            if (loud(j))
                sound(j);
        }
    }
    for (; i < samples.count; ++i) {
        nonZero |= !zero(i);
        if (loud(i))
            sound(i);
    }
    channel.nonZero = nonZero;
}

void SilenceMeter::AddBytes(const RawFrames& frames)
{
    for (std::uint32_t c = 0; c < channels.size(); ++c)
        ViewChannel(format, frames, c, [&](const auto& samples) { AddChannel(samples, channels[c]); });
    framesBefore += frames.frames;
}

void SilenceMeter::Finish(LevelReport& report)
{
    report.settings.silenceThresholdDb = settings.silenceThresholdDb;
    report.settings.silenceMinimumMs = settings.silenceMinimumMs;
    for (Channel& channel : channels) {
        ChannelSilence figures = std::move(channel.figures);
        const bool silent = channel.lastSound < 0;
        figures.lead = silent ? framesBefore : channel.firstSound;
        figures.tail = silent ? framesBefore : framesBefore - 1 - channel.lastSound;
        figures.digitalZero = !channel.nonZero;
        report.silence.push_back(std::move(figures));
    }
}
