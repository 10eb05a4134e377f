#pragma once

#include "policy/PolicyMeasure.h"

#include <optional>
#include <string>
#include <vector>

// A delivery policy as read from its file: a name and rules, each over one
// measure, with the limit it holds the measure to and what missing it means.
// Read once, then shared by every file of a run.

enum class RuleSeverity { Fail, Warn };
// How a measure of each channel is judged: every channel on its own, or
// the highest of them.
enum class ChannelJudging { Each, Highest };

struct PolicyRule {
    std::string name; // as printed: the measure, or the finding's code
    const PolicyMeasure* measure = nullptr;
    std::string code; // the finding a "finding" rule counts
    RuleSeverity severity = RuleSeverity::Fail;
    ChannelJudging channels = ChannelJudging::Each;
    bool mayBeMissing = false;
    // The limit: any of these that are set.
    std::vector<Figure> allowed;
    std::optional<double> atLeast;
    std::optional<double> atMost;
    // Every file of a run must give the same figure.
    bool sameInBatch = false;
};

struct Policy {
    std::string name;
    std::vector<PolicyRule> rules;

    // How far into a file its rules read.
    FactDepth Depth() const;
};

// Parses the TOML text of a policy; source names it in messages. False,
// with a message naming the line, for a text that isn't TOML, a key that
// isn't one of a policy's, a measure that doesn't exist, a range whose low
// end is above its high end or a rule without a limit.
bool ParsePolicy(std::string_view text, const std::string& source, Policy& policy, std::string& problem);

// The file of a policy given by path or, for a word without a folder or
// ".toml", by the name of a shipped one; empty when there is none.
std::u16string FindPolicyFile(const std::u16string& nameOrPath);
// Reads and parses the policy that nameOrPath gives.
bool LoadPolicy(const std::u16string& nameOrPath, Policy& policy, std::string& problem);
