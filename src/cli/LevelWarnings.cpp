#include "cli/LevelWarnings.h"

#include <algorithm>

std::vector<Finding> FindLevelWarnings(const LevelReport& report)
{
    std::vector<Finding> warnings;
    const std::vector<ChannelSilence>& silence = report.silence;
    const bool anyNonZero =
        std::any_of(silence.begin(), silence.end(), [](const ChannelSilence& channel) { return !channel.digitalZero; });
    for (std::size_t c = 0; c < silence.size() && anyNonZero; ++c) {
        if (!silence[c].digitalZero)
            continue;
        const FindingFigure channel[] = {{u"チャンネル", "channel", static_cast<std::int64_t>(c + 1)}};
        warnings.push_back(
            MakeFinding(*FindFindingKind("audio.silent-channel"), std::nullopt, "", std::nullopt, std::nullopt, channel));
    }
    // A wholly silent channel is silent from its first frame to its last.
    const bool allSilent = !silence.empty() && std::all_of(silence.begin(), silence.end(), [&](const ChannelSilence& channel) {
        return channel.lead == report.frames;
    });
    if (allSilent)
        warnings.push_back(MakeFinding(*FindFindingKind("audio.silent"), std::nullopt, "", std::nullopt, std::nullopt));
    return warnings;
}
