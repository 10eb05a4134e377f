#pragma once

// A rectangle of four 32-bit floats, in logical units unless its user says
// otherwise. A negative width or height is a legal value.
struct RectF {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
};
