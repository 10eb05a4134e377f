#include "engine/PositionedWidget.h"

#include "engine/Viewer.h"
#include "layouttext/AttributeMap.h"
#include "layouttext/ValueSyntax.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr int kPositionFieldCount = 8;

// A position text taken apart: its prefix, its number, and whether it is a
// percent form.
struct PositionText {
    char16_t prefix = 0;
    float v = 0;
    bool percent = false;
};

// The first character is the prefix, whatever it is; the number is read
// from behind it up to a closing percent sign. A text of fewer than two
// characters has no position.
bool ParsePosition(const WideString& text, PositionText& position)
{
    if (text.Length() < 2)
        return false;
    std::u16string_view number = text.View().substr(1);
    position.prefix = text[0];
    position.percent = text.EndsWith(u"%");
    if (position.percent)
        number.remove_suffix(1);
    position.v = ScanFloat(number);
    return true;
}

bool BeginsWith(const WideString& text, char16_t unit)
{
    return !text.IsEmpty() && text[0] == unit;
}

} // namespace

PositionedWidget::PositionedWidget(Viewer* owner) : Owner(owner) {}

// Overrideables

// RelPos is read first, each item placed against the widget before this
// one; a Pos of the same section then overwrites it item by item.
bool PositionedWidget::Load(const AttributeMap& map)
{
    if (map.Contains(u"RelPos")) {
        const std::int32_t count = map.GetItemCount(u"RelPos");
        for (int i = 0; i < kPositionFieldCount && i < count; ++i)
            StoreIfChanged(PositionField(i), ResolveRelative(i % 4, map.GetItemOr(u"RelPos", i, {})));
    }
    return Widget::Load(map);
}

// One RelPos item to a position text. Indexes 0 and 2 are horizontal, 1
// and 3 vertical. L, R, T and B place the edge against the edges of the
// widget before as they stand now, as a plain number; "0" takes over that
// widget's own text, so it stays live. Everything else stays as it is.
WideString PositionedWidget::ResolveRelative(int index, const WideString& value)
{
    if (Owner == nullptr || Owner->WidgetCount() == 0)
        return value;
    auto* previous = dynamic_cast<PositionedWidget*>(Owner->GetLastWidget());
    if (previous == nullptr)
        return value;

    const bool horizontal = index % 2 == 0;
    const double n = value.Length() > 0 ? ScanDouble(value.View().substr(1)) : 0.0;
    if (horizontal && BeginsWith(value, u'L'))
        return WideString(u"L") + FormatF(previous->Right() + n);
    if (horizontal && BeginsWith(value, u'R'))
        return WideString(u"L") + FormatF(previous->Left() - n);
    if (!horizontal && BeginsWith(value, u'T'))
        return WideString(u"T") + FormatF(previous->Bottom() + n);
    // A B item adds to the top edge as well: the new top stands n below the
    // top of the widget before.
    if (!horizontal && BeginsWith(value, u'B'))
        return WideString(u"T") + FormatF(previous->Top() + n);
    if (value == u"0") {
        switch (index) {
        case 0:
            return previous->LPos;
        case 1:
            return previous->TPos;
        case 2:
            return previous->RPos;
        default:
            return previous->BPos;
        }
    }
    return value;
}

RectF PositionedWidget::GetInsetRect(float dLeft, float dTop, float dRight, float dBottom)
{
    const float left = Left();
    const float top = Top();
    return {left + dLeft, top + dTop, Right() - left + dRight - dLeft, Bottom() - top + dBottom - dTop};
}

RectF PositionedWidget::GetRect()
{
    const float left = Left();
    const float top = Top();
    return {left, top, Right() - left, Bottom() - top};
}

bool PositionedWidget::GetAttribute(const WideString& key, WideString& value)
{
    if (key == u"Width") {
        value = FormatG(Right() - Left());
        return true;
    }
    return Widget::GetAttribute(key, value);
}

// A position text on the horizontal axis, in logical units: from the left
// (L), the right (R) or the centre (C) of the view, as a width behind the
// left edge (W), from the view's origin (l) or from the bitmap's far edge
// (r). Percent forms are truncated toward zero; an unknown prefix gives the
// number itself.
float PositionedWidget::EvalX(const WideString& text)
{
    Axis axis{u'L', u'R', u'W', u'l', u'r', &PositionedWidget::Left};
    if (Owner != nullptr) {
        axis.view = Owner->GetViewWidth() / Owner->GetScale();
        axis.origin = Owner->LogicalFromDeviceX(Owner->DeviceOriginX);
        axis.bitmapEdge = Owner->LogicalFromDeviceX(Owner->GetBitmapRect().width + Owner->DeviceOriginX);
    }
    return Evaluate(text, axis);
}

// The same on the vertical axis: top (T), bottom (B), centre (C), height
// below the top edge (H), origin (t) and the bitmap's far edge (b).
float PositionedWidget::EvalY(const WideString& text)
{
    Axis axis{u'T', u'B', u'H', u't', u'b', &PositionedWidget::Top};
    if (Owner != nullptr) {
        axis.view = Owner->GetViewHeight() / Owner->GetScale();
        axis.origin = Owner->LogicalFromDeviceY(Owner->DeviceOriginY);
        axis.bitmapEdge = Owner->LogicalFromDeviceY(Owner->GetBitmapRect().height + Owner->DeviceOriginY);
    }
    return Evaluate(text, axis);
}

// Without an owner, as for the shared empty widget, the view has no extent.
// The widget's own near edge is asked for only by the extent form, which
// its near edge never holds.
float PositionedWidget::Evaluate(const WideString& text, const Axis& axis)
{
    PositionText p;
    if (!ParsePosition(text, p))
        return 0.0f;
    const float v = p.v;
    if (p.prefix == axis.nearPrefix)
        return p.percent ? std::trunc(axis.view * v / 100) : v;
    if (p.prefix == axis.farPrefix)
        return p.percent ? std::trunc(axis.view * (100 - v) / 100) : axis.view - v;
    if (p.prefix == u'C')
        return p.percent ? std::trunc(axis.view * (v + 50) / 100) : axis.view * 0.5f + v;
    if (p.prefix == axis.extentPrefix) {
        const float edge = (this->*axis.nearEdge)();
        return p.percent ? std::trunc(edge + axis.view * v / 100) : edge + v;
    }
    if (p.prefix == axis.originPrefix)
        return p.percent ? std::trunc(axis.origin * v / 100) : axis.origin + v;
    if (p.prefix == axis.bitmapPrefix)
        return p.percent ? std::trunc((100 - v) * axis.bitmapEdge / 100) : axis.bitmapEdge - v;
    return v;
}

// Geometry

// A left edge can't be a width: a W in the text or its floor gives 0, which
// also keeps W from asking for the left edge while it is being worked out.
float PositionedWidget::Left()
{
    if (BeginsWith(LPos, u'W') || BeginsWith(LPosFloor, u'W'))
        return 0.0f;
    const float a = EvalX(LPos);
    return LPosFloor.IsEmpty() ? a : std::max(a, EvalX(LPosFloor));
}

float PositionedWidget::Top()
{
    if (BeginsWith(TPos, u'H') || BeginsWith(TPosFloor, u'H'))
        return 0.0f;
    const float a = EvalY(TPos);
    return TPosFloor.IsEmpty() ? a : std::max(a, EvalY(TPosFloor));
}

// A floor holds the edge back when the view shrinks.
float PositionedWidget::Right()
{
    const float a = EvalX(RPos);
    return RPosFloor.IsEmpty() ? a : std::max(a, EvalX(RPosFloor));
}

float PositionedWidget::Bottom()
{
    const float a = EvalY(BPos);
    return BPosFloor.IsEmpty() ? a : std::max(a, EvalY(BPosFloor));
}

// The left and top edges belong to the widget, the right and bottom ones
// don't.
bool PositionedWidget::HitTest(const PointF& point)
{
    const RectF r = GetRect();
    return point.x >= r.x && point.x < r.x + r.width && point.y >= r.y && point.y < r.y + r.height;
}
