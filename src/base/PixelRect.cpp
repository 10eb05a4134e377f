#include "base/PixelRect.h"

#include <algorithm>

bool IntersectPixelRects(PixelRect& result, const PixelRect& a, const PixelRect& b)
{
    result = {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
              std::min(a.bottom, b.bottom)};
    if (result.left < result.right && result.top < result.bottom)
        return true;
    result = {};
    return false;
}
