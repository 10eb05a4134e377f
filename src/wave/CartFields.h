#pragma once

#include "wave/BodyBytes.h"

#include <cstdint>

// The broadcast cart chunk: what plays, by whom, when, and at what level.
struct CartFields {
    BodySpan version, title, artist, cutId, clientId, category, startDate, startTime, endDate, endTime;
    std::int32_t levelReference = 0;
};

CartFields ReadCartFields(BodySpan body);
