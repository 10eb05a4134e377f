#include "wave/CuePoints.h"

std::vector<CuePoint> ReadCuePoints(BodySpan body)
{
    std::vector<CuePoint> points;
    const std::size_t count = BodyU32(body, 0);
    for (std::size_t i = 0; i < count && 4 + (i + 1) * 24 <= body.size(); ++i) {
        const std::size_t at = 4 + i * 24;
        points.push_back({BodyU32(body, at), BodyU32(body, at + 4), BodyU32(body, at + 20)});
    }
    return points;
}
