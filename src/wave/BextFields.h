#pragma once

#include "wave/BodyBytes.h"

#include <cstdint>
#include <optional>
#include <vector>

// The fields of a broadcast extension chunk, read from its body: the texts
// as their bytes up to the first zero byte, the loudness of version 2 as
// written (hundredths; 0x7FFF where unset).
struct BextFields {
    BodySpan description, originator, originatorReference, originationDate, originationTime;
    std::uint64_t timeReference = 0;
    std::uint16_t version = 0;
    // 32 bytes for a basic UMID, 64 for an extended one, 0 for none: an
    // extended one has something in its second half.
    BodySpan umid;
    std::int16_t loudnessValue = 0, loudnessRange = 0, maxTruePeakLevel = 0, maxMomentaryLoudness = 0,
                 maxShortTermLoudness = 0;
    // The coding history, line by line (CR LF ends each).
    std::vector<BodySpan> codingHistory;
};

constexpr std::size_t kBextFixedBytes = 602;
constexpr std::int16_t kBextLoudnessUnset = 0x7FFF;

// A short body reads as if zero-filled.
BextFields ReadBextFields(BodySpan body);
