#pragma once

#include "base/WideString.h"
#include "wave/Rf64File.h"

#include <cstdint>
#include <string>

// What the walk of a tidy copy needs to know of its input before it writes
// a byte: the size of a frame, which the audio is cut by, and for an RF64
// file its layout, whose ds64 sizes stand where a 32-bit size defers.
struct TidyPlan {
    std::uint32_t blockAlign = 0; // 0 when no format tells it
    bool rf64 = false;
    Rf64Layout layout;            // of an RF64 input only
};

// The RIFF header: id, size and form type.
constexpr std::int64_t kRiffHeaderBytes = 12;

bool ReadTidyPlan(const WideString& input, TidyPlan& plan, std::string& problem);
