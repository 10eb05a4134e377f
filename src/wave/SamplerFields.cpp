#include "wave/SamplerFields.h"

SamplerFields ReadSamplerFields(BodySpan body)
{
    SamplerFields fields;
    std::uint32_t* header[] = {&fields.manufacturer, &fields.product,     &fields.samplePeriod,
                               &fields.unityNote,    &fields.pitchFraction, &fields.smpteFormat,
                               &fields.smpteOffset,  &fields.loopCount,   &fields.samplerDataBytes};
    for (std::size_t i = 0; i < std::size(header); ++i)
        *header[i] = BodyU32(body, i * 4);
    for (std::size_t i = 0; i < fields.loopCount; ++i) {
        const std::size_t at = kSamplerHeaderBytes + i * kSamplerLoopBytes;
        if (at + kSamplerLoopBytes > body.size())
            break;
        fields.loops.push_back({BodyU32(body, at), BodyU32(body, at + 4), BodyU32(body, at + 8), BodyU32(body, at + 12),
                                BodyU32(body, at + 16), BodyU32(body, at + 20)});
    }
    return fields;
}
