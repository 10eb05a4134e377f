#pragma once

#include "check/Finding.h"
#include "measure/LevelReport.h"

#include <vector>

// What a measurement of the audio shows that the check can't: a channel of
// digital zero beside one that is not (one finding for each such channel),
// and a file whose every channel is below the silence threshold throughout.
// Empty for a report without the silence measured.
std::vector<Finding> FindLevelWarnings(const LevelReport& report);
