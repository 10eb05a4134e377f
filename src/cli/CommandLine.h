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
    // --md5: the MD5 of the audio, in the same pass as the levels unless
    // it is asked for alone.
    bool md5 = false;
    bool levels = true;
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
    bool tidyMd5 = false; // --tidy with --md5: the copy gets an MD5 chunk
    std::vector<WideString> paths;
};

std::optional<int> ReadCommandLine(const std::vector<std::u16string>& arguments, CommandLine& line);
