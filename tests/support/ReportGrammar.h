#pragma once

#include "base/WideString.h"

#include <string>

// Whether a check's report is made only of the lines the check writes, in
// the order of its steps, and whether the result flag agrees with it: false
// exactly for the all-clear line. On a mismatch, why names the first fault.
bool IsWellFormedReport(const WideString& report, bool hasError, std::string& why);
