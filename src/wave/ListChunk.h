#pragma once

#include "wave/Chunk.h"

// The LIST chunk: a list type and one child, whose id is the list type and
// whose body is all the rest of the list's body.
class ListChunk : public Chunk {
public:
    explicit ListChunk(WaveDocument& document);

    bool Read(std::uint32_t id) override;
};
