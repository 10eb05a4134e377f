#include "wave/BextFields.h"

namespace {

std::int16_t BodyI16(BodySpan body, std::size_t offset)
{
    return static_cast<std::int16_t>(BodyU16(body, offset));
}

bool AllZero(BodySpan bytes)
{
    for (std::uint8_t byte : bytes) {
        if (byte != 0)
            return false;
    }
    return true;
}

} // namespace

BextFields ReadBextFields(BodySpan body)
{
    BextFields fields;
    fields.description = BodyText(body, 0, 256);
    fields.originator = BodyText(body, 256, 32);
    fields.originatorReference = BodyText(body, 288, 32);
    fields.originationDate = BodyText(body, 320, 10);
    fields.originationTime = BodyText(body, 330, 8);
    fields.timeReference = BodyU32(body, 338) | std::uint64_t{BodyU32(body, 342)} << 32;
    fields.version = BodyU16(body, 346);
    if (body.size() >= 348 + 32 && !AllZero(body.subspan(348, 32)))
        fields.umid = body.subspan(348, 32);
    if (body.size() >= 348 + 64 && !AllZero(body.subspan(348 + 32, 32)))
        fields.umid = body.subspan(348, 64);
    fields.loudnessValue = BodyI16(body, 412);
    fields.loudnessRange = BodyI16(body, 414);
    fields.maxTruePeakLevel = BodyI16(body, 416);
    fields.maxMomentaryLoudness = BodyI16(body, 418);
    fields.maxShortTermLoudness = BodyI16(body, 420);
    if (body.size() > kBextFixedBytes) {
        BodySpan history = BodyText(body, kBextFixedBytes, body.size() - kBextFixedBytes);
        while (!history.empty()) {
            std::size_t end = 0;
            while (end < history.size() && history[end] != '\r' && history[end] != '\n')
                ++end;
            fields.codingHistory.push_back(history.first(end));
            while (end < history.size() && (history[end] == '\r' || history[end] == '\n'))
                ++end;
            history = history.subspan(end);
        }
    }
    return fields;
}
