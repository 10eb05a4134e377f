#pragma once

#include "base/WideString.h"
#include "check/CheckReport.h"

#include <cstdint>
#include <optional>

class WaveDocument;

// The check of one wave file: whether it exists, whether its RIFF structure
// reads, whether its format is PCM in range, whether it has audio data.
// report receives the findings, or the all-clear line; reportHasError is
// false exactly when the report is the all-clear line. Runs on any thread;
// it keeps nothing between runs and writes nothing to disk.
void RunWaveCheck(const WideString& wavePath, CheckReport& report, bool& reportHasError);

// Where the format and data chunks that a check judged begin in the file;
// none where the check had no such chunk.
struct JudgedChunks {
    std::optional<std::int64_t> formatOffset;
    std::optional<std::int64_t> dataOffset;
};

// The same check, telling where the chunks it judged lie, so that the
// checker's findings point at the chunk that each line is about.
void RunWaveCheck(const WideString& wavePath, CheckReport& report, bool& reportHasError, JudgedChunks& judged);

// The same check of a file that the caller has found and walked: document
// as its Open left it and walkedWell what that Open gave, or a null
// document where no file is at the path. The walk needs to keep no more
// than TreeForm::SlotsOnly keeps.
void RunWaveCheck(const WaveDocument* document, bool walkedWell, CheckReport& report, bool& reportHasError,
                  JudgedChunks& judged);
