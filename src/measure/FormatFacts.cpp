#include "measure/FormatFacts.h"

#include "measure/AudioPlace.h"
#include "wave/FormatChunk.h"
#include "wave/FourCc.h"

#include <cstdio>

namespace {

// Data1-Data2-Data3-Data4, the first three little-endian.
std::string GuidText(const std::uint8_t* guid)
{
    char text[40];
    std::snprintf(text, sizeof text, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", ReadLittleEndian32(guid),
                  ReadLittleEndian16(guid + 4), ReadLittleEndian16(guid + 6), guid[8], guid[9], guid[10], guid[11],
                  guid[12], guid[13], guid[14], guid[15]);
    return text;
}

} // namespace

FormatFacts ReadFormatFacts(FileLayout& layout)
{
    FormatFacts facts;
    facts.container = layout.IsOpen() ? layout.GetContainer() : FileContainer::Neither;
    AudioPlace place;
    std::string problem;
    if (facts.container == FileContainer::Neither || !FindAudio(layout, place, problem))
        return facts;
    const std::uint8_t* format = place.format;
    facts.formatTag = ReadLittleEndian16(format);
    facts.channels = ReadLittleEndian16(format + 2);
    facts.sampleRate = ReadLittleEndian32(format + 4);
    facts.blockAlign = ReadLittleEndian16(format + 12);
    facts.bits = ReadLittleEndian16(format + 14);
    if (*facts.formatTag == kFormatTagExtensible && place.formatBytes >= 40)
        facts.subFormat = GuidText(format + 24);
    // A frame is one sample of each channel only where the block says so;
    // a compressed format's blocks hold a number of samples its header
    // doesn't give.
    const bool framed = *facts.bits > 0 && *facts.blockAlign == *facts.channels * ((*facts.bits + 7) / 8);
    if (place.dataPosition >= 0 && framed && *facts.blockAlign > 0) {
        facts.frames = place.frameCount;
        if (*facts.sampleRate > 0)
            facts.seconds = static_cast<double>(place.frameCount) / *facts.sampleRate;
    }
    return facts;
}

const char* ContainerName(FileContainer container)
{
    switch (container) {
    case FileContainer::Riff: return "riff";
    case FileContainer::Rf64: return "rf64";
    case FileContainer::Neither: break;
    }
    return "";
}
