#pragma once

#include "base/WideString.h"
#include "cli/CheckPrinter.h"
#include "measure/DeliveryTarget.h"
#include "measure/MeterSettings.h"
#include "policy/Policy.h"

#include <optional>
#include <string>
#include <vector>

enum class RunMode { Check, Chunks, Info, Levels, Tidy };

// What --levels measures beyond the levels: loudness, and a target; the
// settings of the meters that always run; and whether a warning fails.
struct LevelOptions {
    bool loudness = false;
    bool hasTarget = false;
    DeliveryTarget target;
    MeterSettings meters;
    bool strict = false;
};

// The command line of sondara-check as read: the one mode it asks for, its
// options, and the paths it names (for --tidy, the one input).
struct CommandLine {
    RunMode mode = RunMode::Check;
    OutputFormat format = OutputFormat::Text;
    bool strict = false;
    unsigned jobs = 0; // 0 for one a core
    bool nulSeparated = false;
    LevelOptions levelOptions;
    std::optional<Policy> policy; // the check's, with --policy
    WideString tidyOutput;
    std::vector<WideString> paths;
};

std::optional<int> ReadCommandLine(const std::vector<std::u16string>& arguments, CommandLine& line);
