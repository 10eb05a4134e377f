#pragma once

// A point and a rectangle of 32-bit floats, in logical units unless their
// user says otherwise. A negative width or height is a legal value.
struct PointF {
    float x = 0;
    float y = 0;
};

struct RectF {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
};
