#pragma once

#include "layouttext/AttributeMap.h"
#include "wave/Chunk.h"

// The INFO list: texts under four-character ids. It takes its size from the
// LIST around it.
class InfoChunk : public Chunk {
public:
    explicit InfoChunk(WaveDocument& document);
    ~InfoChunk() override;

    bool Read(std::uint32_t id) override;

    const AttributeMap& GetEntries() const { return entries; }

private:
    AttributeMap entries;
};
