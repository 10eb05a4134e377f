#pragma once

#include "wave/Chunk.h"

// The RIFF chunk: a form type and the chunks it holds.
class RootChunk : public Chunk {
public:
    explicit RootChunk(WaveDocument& document);
    ~RootChunk() override;

    bool Read(std::uint32_t id) override;

    std::uint32_t GetFormType() const { return formType; }

private:
    std::uint32_t formType;
};
