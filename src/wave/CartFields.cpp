#include "wave/CartFields.h"

CartFields ReadCartFields(BodySpan body)
{
    CartFields fields;
    fields.version = BodyText(body, 0, 4);
    fields.title = BodyText(body, 4, 64);
    fields.artist = BodyText(body, 68, 64);
    fields.cutId = BodyText(body, 132, 64);
    fields.clientId = BodyText(body, 196, 64);
    fields.category = BodyText(body, 260, 64);
    fields.startDate = BodyText(body, 452, 10);
    fields.startTime = BodyText(body, 462, 8);
    fields.endDate = BodyText(body, 470, 10);
    fields.endTime = BodyText(body, 480, 8);
    fields.levelReference = static_cast<std::int32_t>(BodyU32(body, 680));
    return fields;
}
