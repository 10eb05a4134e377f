#pragma once

#include "measure/LevelReport.h"

#include <string>

// The lines of a file's levels as --levels prints them: text ending in LF,
// or the members of a JSON object (decibels of silence as null).
std::string FormatLevelsText(const LevelReport& report);
std::string FormatLevelsJson(const LevelReport& report);
