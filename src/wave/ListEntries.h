#pragma once

#include "wave/BodyBytes.h"

#include <cstdint>
#include <string>
#include <vector>

// The chunks inside a LIST of metadata (INFO, adtl): each with its id, its
// offset in the file and as much of its body as the list holds.
struct ListEntry {
    std::int64_t offset;
    std::string id;
    BodySpan body;
};

// The entries of a list's body, the four bytes of its type left out, whose
// first byte lies at offset in the file. An entry that runs past the list
// keeps what the list holds and ends it.
std::vector<ListEntry> ReadListEntries(BodySpan entries, std::int64_t offset);
