#include "check/DeliveryTarget.h"

#include "check/TextFormat.h"

#include <cmath>

bool FindDeliveryTarget(const std::string& name, DeliveryTarget& target)
{
    // EBU R 128: -23 LUFS, ±0.5 LU for programmes that can be normalised
    // in advance, true peak at most -1 dBTP. ATSC A/85: -24 LKFS ±2 dB, at
    // most -2 dBTP. Streaming platforms: about -14 LUFS and -1 dBTP; ±1 LU
    // is what they commonly accept before they turn a file down or up.
    static const DeliveryTarget kTargets[] = {
        {"ebu-r128", -23, 0.5, -1},
        {"atsc-a85", -24, 2, -2},
        {"streaming", -14, 1, -1},
    };
    for (const DeliveryTarget& known : kTargets) {
        if (known.name == name) {
            target = known;
            return true;
        }
    }
    return false;
}

std::vector<std::string> TargetMisses(const DeliveryTarget& target, const LoudnessMeter::Figures& figures)
{
    std::vector<std::string> misses;
    if (std::isinf(figures.integrated) || std::fabs(figures.integrated - target.lufs) > target.tolerance) {
        misses.push_back("integrated " + (std::isinf(figures.integrated) ? std::string("-inf") : FormatFixed(figures.integrated, 1)) +
                         " LUFS, wanted " + FormatFixed(target.lufs, 1) + " ±" + FormatFixed(target.tolerance, 1));
    }
    for (std::size_t c = 0; c < figures.truePeak.size(); ++c) {
        const double peak = figures.truePeak[c] > 0 ? 20 * std::log10(figures.truePeak[c]) : -1e300;
        if (peak > target.maxTruePeak)
            misses.push_back("channel " + std::to_string(c + 1) + ": true peak " + FormatFixed(peak, 1) +
                             " dBTP, at most " + FormatFixed(target.maxTruePeak, 1));
    }
    return misses;
}
