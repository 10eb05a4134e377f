#pragma once

#include "policy/PolicyJudge.h"

#include <string>
#include <vector>

// A policy's verdict on one file, as each printer of the check puts it.

// "policy NAME: pass", or a line for each rule that warns, fails or was
// not measured, with the figure and the limit; each line ends in LF.
std::string FormatPolicyText(const PolicyVerdict& verdict);
// The member "policy": {"name", "outcome", "rules": [...]} of a file's object.
std::string FormatPolicyJson(const PolicyVerdict& verdict);
// One rule's outcome in a sentence, for a row of CSV: "true-peak: -0.5
// dBTP, at most -1.0 (fail)".
std::string FormatRuleSentence(const RuleVerdict& rule);
