#pragma once

#include "policy/Policy.h"

#include <string>
#include <vector>

enum class RuleOutcome { Pass, Warn, Fail, NotMeasured };

// "pass", "warn", "fail", "not-measured".
const char* RuleOutcomeName(RuleOutcome outcome);

// One rule's outcome for one file, with the figure that decided it, as
// printed, and the limit in words, so that printers never recompute.
struct RuleVerdict {
    const PolicyRule* rule = nullptr;
    RuleOutcome outcome = RuleOutcome::Pass;
    std::string value; // the deciding figure as printed; empty when not measured
    std::string limit; // "at most -1.0", "one of 44100", "-23.5 to -22.5"
    // A missing measure the rule allows: not-measured, but no fail.
    bool Excused() const { return outcome == RuleOutcome::NotMeasured && rule->mayBeMissing; }
};

struct PolicyVerdict {
    const Policy* policy = nullptr;
    RuleOutcome outcome = RuleOutcome::Pass; // the worst of the rules': pass, warn or fail
    std::vector<RuleVerdict> rules;
};

// Judges the files of a run against one policy, in the run's order: a rule
// that every file share a figure holds each to the first file's.
class PolicyJudge {
public:
    explicit PolicyJudge(const Policy& policy) : policy(policy), firstFigures(policy.rules.size()) {}

    PolicyVerdict Judge(const FileCheck& check, const FileFacts& facts);

private:
    const Policy& policy;
    std::vector<std::optional<Figure>> firstFigures; // a rule's, for same-in-batch
};
