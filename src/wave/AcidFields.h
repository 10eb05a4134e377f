#pragma once

#include "wave/BodyBytes.h"

#include <cstdint>

// The loop facts of an acid chunk: tempo, beats, meter and root note.
struct AcidFields {
    bool oneShot = false;
    bool rootNoteSet = false;
    std::uint16_t rootNote = 0;  // a MIDI note number
    std::uint32_t beats = 0;
    std::uint16_t meterDenominator = 0, meterNumerator = 0;
    float tempo = 0;
};

AcidFields ReadAcidFields(BodySpan body);
