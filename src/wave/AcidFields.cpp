#include "wave/AcidFields.h"

#include <cstring>

AcidFields ReadAcidFields(BodySpan body)
{
    AcidFields fields;
    const std::uint32_t flags = BodyU32(body, 0);
    fields.oneShot = flags & 1;
    fields.rootNoteSet = flags & 2;
    fields.rootNote = BodyU16(body, 4);
    fields.beats = BodyU32(body, 12);
    fields.meterDenominator = BodyU16(body, 16);
    fields.meterNumerator = BodyU16(body, 18);
    const std::uint32_t tempoBits = BodyU32(body, 20);
    std::memcpy(&fields.tempo, &tempoBits, sizeof fields.tempo);
    return fields;
}
