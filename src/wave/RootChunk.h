#pragma once

#include "wave/Chunk.h"

// The RIFF chunk: a form type and the chunks it holds.
class RootChunk : public Chunk {
public:
    explicit RootChunk(WaveDocument& document);
    ~RootChunk() override;

    bool Read(std::uint32_t id) override;
    // Its own section, then one child for each section that follows, made
    // by the document's factory from the section's name.
    bool LoadDescription(LayoutDocument& sections) override;
    // Type=Wave sets the form type WAVE.
    bool SetAttribute(const WideString& name, const WideString& value) override;
    // Always as RIFF, whatever the id read, with the form type and every
    // child in order.
    bool Write(FileStream& target) override;
    bool IsWrittenAsRead() const override { return false; }

    std::uint32_t GetFormType() const { return formType; }

private:
    bool ReadChildren(FileStream& stream);

    std::uint32_t formType;
};
