#pragma once

#include "wave/Rf64File.h"

#include <cstdint>
#include <string>

class FileLayout;

// What the walk of a tidy copy needs to know of its input before it writes
// a byte: the size of a frame, which the audio is cut by, and for an RF64
// file its layout, whose ds64 sizes stand where a 32-bit size defers.
struct TidyPlan {
    std::uint32_t blockAlign = 0;     // 0 when no format tells it
    const Rf64Layout* rf64 = nullptr; // of an RF64 input only: its file layout's
    bool storeMd5 = false;            // the copy ends in an MD5 chunk of its audio, in place of any there
};

// The RIFF header: id, size and form type.
constexpr std::int64_t kRiffHeaderBytes = 12;

bool ReadTidyPlan(const FileLayout& input, TidyPlan& plan, std::string& problem);
