#pragma once

#include "measure/Loudness.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// A loudness that a broadcaster, a platform or the user asks a delivery to
// meet: an integrated loudness within a tolerance, and a highest true peak.
struct DeliveryTarget {
    std::string name;
    double lufs = 0;
    double tolerance = 0;
    double maxTruePeak = 0; // dBTP
};

// One measure of a programme outside a target's limits. The value is the
// figure as printed, to the tenth that decided (-inf for a programme with
// no loudness); the limit is the bound it crossed: for an integrated
// loudness too low the lowest allowed, too high the highest.
struct TargetMiss {
    enum class Measure { Integrated, TruePeak };
    Measure measure = Measure::Integrated;
    std::optional<std::uint32_t> channel; // 1-based; none for the whole programme
    double value = 0;                     // LUFS or dBTP
    double limit = 0;
    bool belowLimit = false;              // the value lies under the limit, not over it
    std::string text;                     // English, with the figure and the limit
};

// The name of a miss's measure as records carry it: "integrated", "truePeak".
const char* MeasureName(TargetMiss::Measure measure);

// The named targets (see the README for their sources): "ebu-r128",
// "atsc-a85", "streaming"; false for any other name.
bool FindDeliveryTarget(const std::string& name, DeliveryTarget& target);
// What a programme misses of a target, a record each; empty when it meets it.
std::vector<TargetMiss> FindTargetMisses(const DeliveryTarget& target, const LoudnessMeter::Figures& figures);
