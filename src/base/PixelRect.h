#pragma once

#include <cstdint>

// A rectangle in pixels, right and bottom edges outside.
struct PixelRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    std::int32_t Width() const { return right - left; }
    std::int32_t Height() const { return bottom - top; }
};

// The overlap of a and b in result; false, and an empty result, when they
// don't overlap.
bool IntersectPixelRects(PixelRect& result, const PixelRect& a, const PixelRect& b);
