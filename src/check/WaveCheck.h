#pragma once

#include "base/WideString.h"
#include "check/CheckReport.h"

// The check of one wave file: whether it exists, whether its RIFF structure
// reads, whether its format is PCM in range, whether it has audio data.
// report receives the findings, or the all-clear line; reportHasError is
// false exactly when the report is the all-clear line. Runs on any thread;
// it keeps nothing between runs and writes nothing to disk.
void RunWaveCheck(const WideString& wavePath, CheckReport& report, bool& reportHasError);
