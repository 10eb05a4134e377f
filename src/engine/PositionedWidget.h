#pragma once

#include "engine/Widget.h"

class Viewer;

// A widget whose rectangle follows from its position texts, evaluated
// against the Viewer's view every time it is asked; nothing is cached. The
// Viewer is its Owner for life.
class PositionedWidget : public Widget {
public:
    explicit PositionedWidget(Viewer* owner);

    // Overrideables
    bool Load(const AttributeMap& map) override;
    WideString ResolveRelative(int index, const WideString& value) override;
    RectF GetInsetRect(float dLeft, float dTop, float dRight, float dBottom) override;
    RectF GetRect() override;
    bool GetAttribute(const WideString& key, WideString& value) override;
    float EvalX(const WideString& text) override;
    float EvalY(const WideString& text) override;

    // Geometry
    float Left();
    float Top();
    float Right();
    float Bottom();
    bool HitTest(const PointF& point);

    Viewer* GetOwner() const { return Owner; }

protected:
    Viewer* const Owner;

private:
    // What the prefixes of one axis mean, and the view's numbers on it.
    struct Axis {
        char16_t nearPrefix;
        char16_t farPrefix;
        char16_t extentPrefix;
        char16_t originPrefix;
        char16_t bitmapPrefix;
        float (PositionedWidget::*nearEdge)();
        float view = 0;
        float origin = 0;
        float bitmapEdge = 0;
    };

    float Evaluate(const WideString& text, const Axis& axis);
};
