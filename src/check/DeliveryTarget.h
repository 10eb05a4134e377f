#pragma once

#include "check/Loudness.h"

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

// The named targets (see the README for their sources): "ebu-r128",
// "atsc-a85", "streaming"; false for any other name.
bool FindDeliveryTarget(const std::string& name, DeliveryTarget& target);
// What a programme misses of a target, a line each (English, with the
// figure and the limit); empty when it meets it.
std::vector<std::string> TargetMisses(const DeliveryTarget& target, const LoudnessMeter::Figures& figures);
