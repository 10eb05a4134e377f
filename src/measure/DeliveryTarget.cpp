#include "measure/DeliveryTarget.h"

#include "base/TextFormat.h"

#include <cmath>
#include <cstdlib>

namespace {

// A figure in whole tenths, exactly as FormatFixed prints it with one
// decimal: the verdict is taken on what the user reads, so a true peak of
// -0.97 dBTP printed as -1.0 meets a limit of -1.0. A tenth is finer than
// the meters' own accuracy (EBU Tech 3341 allows +0.2/-0.4 dB for a true
// peak), so rounding first loses nothing a measurement could tell.
long long Tenths(double figure)
{
    return std::llround(std::strtod(FormatFixed(figure, 1).c_str(), nullptr) * 10);
}

} // namespace

const char* MeasureName(TargetMiss::Measure measure)
{
    return measure == TargetMiss::Measure::Integrated ? "integrated" : "truePeak";
}

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

// Each figure is compared in whole tenths as printed (see Tenths); a
// programme without loudness misses the integrated loudness, and a channel
// without a true peak (silence) meets any limit.
std::vector<TargetMiss> FindTargetMisses(const DeliveryTarget& target, const LoudnessMeter::Figures& figures)
{
    std::vector<TargetMiss> misses;
    const long long wanted = Tenths(target.lufs), tolerance = Tenths(target.tolerance);
    const bool silent = !std::isfinite(figures.integrated);
    const long long integrated = silent ? 0 : Tenths(figures.integrated);
    if (silent || integrated < wanted - tolerance || integrated > wanted + tolerance) {
        TargetMiss miss;
        miss.measure = TargetMiss::Measure::Integrated;
        miss.belowLimit = silent || integrated < wanted;
        miss.value = silent ? -INFINITY : static_cast<double>(integrated) / 10;
        miss.limit = static_cast<double>(miss.belowLimit ? wanted - tolerance : wanted + tolerance) / 10;
        miss.text = "integrated " + (silent ? std::string("-inf") : FormatFixed(miss.value, 1)) + " LUFS, wanted " +
                    FormatFixed(target.lufs, 1) + " ±" + FormatFixed(target.tolerance, 1);
        misses.push_back(miss);
    }
    const long long highest = Tenths(target.maxTruePeak);
    for (std::size_t c = 0; c < figures.truePeak.size(); ++c) {
        if (!(figures.truePeak[c] > 0))
            continue;
        // The meters never give an infinite peak; were one to come, it
        // would be a miss, not a pass.
        const bool endless = std::isinf(figures.truePeak[c]);
        const long long peak = endless ? 0 : Tenths(20 * std::log10(figures.truePeak[c]));
        if (!endless && peak <= highest)
            continue;
        TargetMiss miss;
        miss.measure = TargetMiss::Measure::TruePeak;
        miss.channel = static_cast<std::uint32_t>(c + 1);
        miss.value = endless ? INFINITY : static_cast<double>(peak) / 10;
        miss.limit = static_cast<double>(highest) / 10;
        miss.text = "channel " + std::to_string(c + 1) + ": true peak " +
                    (endless ? std::string("inf") : FormatFixed(miss.value, 1)) + " dBTP, at most " +
                    FormatFixed(target.maxTruePeak, 1);
        misses.push_back(miss);
    }
    return misses;
}
