#pragma once

#include <cstdint>

// What the user may set of the meters beyond the levels: where silence
// begins, how long a silent run must last to be counted, and how many equal
// samples at the peak make a clipping run. Plain data, copied into each
// meter that needs it.
struct MeterSettings {
    double silenceThresholdDb = -60;  // a sample below this magnitude is silent
    double silenceMinimumMs = 100;    // the shortest silent run inside the audio that is counted
    std::uint32_t clippingRun = 3;    // equal samples in a row at the peak that make a run
};
