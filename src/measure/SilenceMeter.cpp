#include "measure/SilenceMeter.h"

#include "measure/ChannelSamples.h"
#include "measure/CodeLanes.h"
#include "measure/CodeSpans.h"

#include <algorithm>
#include <cmath>

SilenceMeter::SilenceMeter(const SampleFormat& format, const MeterSettings& settings)
    : format(format), settings(settings), path(BestVectorPath()), channels(format.channels)
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
void SilenceMeter::AddChannel(const Samples& view, Channel& channel, std::int64_t firstFrame) const
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
        const std::int64_t frame = firstFrame + i;
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
        if (allSound && channel.lastSound >= 0 && channel.lastSound == firstFrame + i - 1) {
            channel.lastSound = firstFrame + i + kGroup - 1;
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

// Passes by the packed 16-bit frames from frame at on up to the first that
// may change a channel's figures: a channel in sound right before them is
// loud all through them, any other silent, and exactly 0 while it has been
// 0 so far. Returns the frames passed by.
std::uint32_t SilenceMeter::PassByUnchanged(const RawFrames& frames, std::uint32_t at, std::int32_t loudCode)
{
    // A code as loud as that is past full scale: nothing is ever in sound.
    if (loudCode > 32768)
        return 0;
    const std::int64_t first = framesBefore + at;
    MagnitudeRanges ranges;
    for (std::uint32_t c = 0; c < channels.size(); ++c) {
        const Channel& channel = channels[c];
        const bool inSound = channel.lastSound >= 0 && channel.lastSound == first - 1;
        ranges.low[c] = static_cast<std::uint16_t>(inSound ? loudCode : 0);
        ranges.high[c] = static_cast<std::uint16_t>(inSound ? 32768 : channel.nonZero ? loudCode - 1 : 0);
    }
    const std::uint32_t passed = FramesInRanges(path, frames.data + std::size_t{at} * frames.stride, frames.frames - at,
                                                static_cast<std::uint32_t>(channels.size()), ranges);
    for (Channel& channel : channels) {
        if (passed > 0 && channel.lastSound >= 0 && channel.lastSound == first - 1)
            channel.lastSound = first + passed - 1;
    }
    return passed;
}

// Packed 16-bit frames go a group at a time through the least and
// the most magnitude of each channel: a group that is all silence, or all
// sound right after sound, is passed by as AddChannel passes it by, and
// only the others go through AddChannel. Returns the frames taken.
std::uint32_t SilenceMeter::AddGroups(const RawFrames& frames)
{
    constexpr std::uint32_t kGroupFrames = 16;
    const double scale = std::ldexp(1.0, 1 - static_cast<int>(format.bits));
    // The least loud code, as AddChannel works it out.
    const auto loudCode = std::max(1, static_cast<std::int32_t>(std::min(std::ceil(threshold / scale), 1073741824.0)));
    const auto count = static_cast<std::uint32_t>(channels.size());
    std::uint32_t at = 0;
    for (; at + kGroupFrames <= frames.frames; at += kGroupFrames) {
        at += PassByUnchanged(frames, at, loudCode);
        if (at + kGroupFrames > frames.frames)
            break;
        const std::uint8_t* group = frames.data + std::size_t{at} * frames.stride;
        const CodeMagnitudes magnitudes = MagnitudesOf(group, kGroupFrames, count);
        const std::int64_t first = framesBefore + at;
        for (std::uint32_t c = 0; c < count; ++c) {
            Channel& channel = channels[c];
            channel.nonZero = channel.nonZero || magnitudes.most[c] > 0;
            if (magnitudes.most[c] < loudCode)
                continue;
            if (magnitudes.least[c] >= loudCode && channel.lastSound >= 0 && channel.lastSound == first - 1) {
                channel.lastSound = first + kGroupFrames - 1;
                continue;
            }
            ViewChannel(format, RawFrames{group, kGroupFrames, frames.stride}, c,
                        [&](const auto& samples) { AddChannel(samples, channel, first); });
        }
    }
    return at;
}

void SilenceMeter::AddBytes(const RawFrames& frames)
{
    std::uint32_t done = 0;
    if (TakesCodeLanes(format))
        done = AddGroups(frames);
    const RawFrames rest{frames.data + std::size_t{done} * frames.stride, frames.frames - done, frames.stride};
    for (std::uint32_t c = 0; c < channels.size(); ++c)
        ViewChannel(format, rest, c, [&](const auto& samples) { AddChannel(samples, channels[c], framesBefore + done); });
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
