#pragma once

#include "wave/ListEntries.h"

#include <cstdint>
#include <vector>

// The associated data list (LIST adtl): labels (labl), notes (note) and
// labelled texts (ltxt), each for a cue point by its id.
struct AdtlLabel {
    std::int64_t offset;
    std::string id;          // "labl", "note" or "ltxt"
    std::uint32_t cueId;
    std::uint32_t length = 0;   // an ltxt's length in frames
    std::string purpose;        // an ltxt's purpose id
    BodySpan text;
};

// The labels of the list's entries; entries of other ids are left out.
std::vector<AdtlLabel> ReadAdtlLabels(const std::vector<ListEntry>& entries);
