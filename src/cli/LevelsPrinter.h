#pragma once

#include "check/Finding.h"
#include "measure/LevelReport.h"

#include <string>
#include <vector>

// The lines of a file's levels as --levels prints them: text ending in LF,
// or the members of a JSON object (decibels of silence as null). The
// warnings that the audio gave follow the figures, as the check's follow
// its report: lines marked 注意： in text, "findings" in JSON.
std::string FormatLevelsText(const LevelReport& report, const std::vector<Finding>& warnings = {});
std::string FormatLevelsJson(const LevelReport& report, const std::vector<Finding>& warnings = {});
