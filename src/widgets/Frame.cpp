#include "widgets/Frame.h"

#include "layouttext/AttributeMap.h"
#include "platform/Graphics.h"
#include "platform/Pen.h"
#include "widgets/Colour.h"

#include <cmath>
#include <numbers>

namespace {

// One half of a rounded corner: a curve through three points of the circle
// around (cx, cy), at angles in degrees that fall clockwise on the screen.
// A square corner has no curve; its lines meet at the corner.
void AddArc(platform::GraphicsPath& path, float cx, float cy, float radius, double a0, double a1, double a2)
{
    if (radius <= 0)
        return;
    float points[6];
    const double angles[3] = {a0, a1, a2};
    for (int i = 0; i < 3; ++i) {
        const double radians = angles[i] * std::numbers::pi / 180.0;
        points[2 * i] = static_cast<float>(cx + radius * std::cos(radians));
        points[2 * i + 1] = static_cast<float>(cy - radius * std::sin(radians));
    }
    path.AddCurve(points);
}

std::uint32_t Highlight()
{
    return ButtonHighlightColour();
}

std::uint32_t Shadow()
{
    return ButtonShadowColour();
}

} // namespace

Frame::Frame(Viewer* owner)
    : PositionedWidget(owner), TColor(Highlight()), LColor(Highlight()), BColor(Shadow()), RColor(Shadow())
{
}

// Overrideables

// Strokes the four edges, each in its colour, the right one first and the
// top one last, so that where pens overlap the top lies above the others.
// The colours change at the diagonal of each corner. A wide pen stays
// inside the rectangle; below width 2 the frame runs on the rectangle's
// own pixels, right and bottom edges one unit in.
bool Frame::Draw(platform::Graphics& graphics, const RectF&)
{
    platform::SmoothingGuard smoothing(graphics);
    platform::Pen pen(RColor, 1.0f);
    pen.SetWidth(Width);

    const float l = Left();
    const float t = Top();
    const float r = Right();
    const float b = Bottom();
    const float k = std::floor(Width * 0.5f);
    const float x0 = l + k;
    const float y0 = t + k;
    const float x1 = r - 1 - k;
    const float y1 = b - 1 - k;

    {
        platform::GraphicsPath right;
        AddArc(right, x1 - RoundTR, y0 + RoundTR, RoundTR, 45, 22.5, 0);
        right.AddLine(x1, t + RoundTR, x1, y1 - RoundBR);
        AddArc(right, x1 - RoundBR, y1 - RoundBR, RoundBR, 0, -22.5, -45);
        graphics.DrawPath(pen, right);
    }
    {
        pen.SetColor(BColor);
        platform::GraphicsPath bottom;
        AddArc(bottom, x1 - RoundBR, y1 - RoundBR, RoundBR, -45, -67.5, -90);
        bottom.AddLine(l + RoundBL, y1, r - 1 - RoundBR, y1);
        AddArc(bottom, x0 + RoundBL, y1 - RoundBL, RoundBL, -90, -112.5, -135);
        graphics.DrawPath(pen, bottom);
    }
    {
        pen.SetColor(LColor);
        platform::GraphicsPath left;
        AddArc(left, x0 + RoundBL, y1 - RoundBL, RoundBL, -135, -157.5, -180);
        left.AddLine(x0, t + RoundTL, x0, b - 1 - RoundBL);
        AddArc(left, x0 + RoundTL, y0 + RoundTL, RoundTL, -180, -202.5, -225);
        graphics.DrawPath(pen, left);
    }
    {
        pen.SetColor(TColor);
        platform::GraphicsPath top;
        AddArc(top, x0 + RoundTL, y0 + RoundTL, RoundTL, -225, -247.5, -270);
        top.AddLine(l + RoundTL, y0, r - 1 - RoundTR, y0);
        AddArc(top, x1 - RoundTR, y0 + RoundTR, RoundTR, -270, -292.5, -315);
        graphics.DrawPath(pen, top);
    }
    return true;
}

// Keys only in Load. "Raised" and "Sunken" override every colour key, and
// "Raised" wins; "Round" gives its radii in reading order: top-left,
// top-right, bottom-left, bottom-right.
bool Frame::Load(const AttributeMap& map)
{
    if (map.Contains(u"TColor"))
        TColor = ParseHexColor(map.GetRaw(u"TColor"));
    if (map.Contains(u"LColor"))
        LColor = ParseHexColor(map.GetRaw(u"LColor"));
    if (map.Contains(u"RColor"))
        RColor = ParseHexColor(map.GetRaw(u"RColor"));
    if (map.Contains(u"BColor"))
        BColor = ParseHexColor(map.GetRaw(u"BColor"));
    if (map.Contains(u"AllColor")) {
        const std::uint32_t all = ParseHexColor(map.GetRaw(u"AllColor"));
        TColor = LColor = RColor = BColor = all;
    }
    if (map.Contains(u"Width")) {
        const float width = map.GetFloatItem(u"Width", 0, 0.0f);
        if (width >= 0)
            Width = width;
    }
    if (map.Contains(u"Round")) {
        RoundTL = map.GetFloatItem(u"Round", 0, 0.0f);
        RoundTR = map.GetFloatItem(u"Round", 1, 0.0f);
        RoundBL = map.GetFloatItem(u"Round", 2, 0.0f);
        RoundBR = map.GetFloatItem(u"Round", 3, 0.0f);
    }
    if (map.HasItem(u"Option", u"Raised")) {
        TColor = LColor = Highlight();
        BColor = RColor = Shadow();
    } else if (map.HasItem(u"Option", u"Sunken")) {
        TColor = LColor = Shadow();
        BColor = RColor = Highlight();
    }
    return PositionedWidget::Load(map);
}

// One figure round the whole rectangle, left open: the clip closes it.
// The left and top lines move in by half a wide pen.
bool Frame::BuildPath(platform::GraphicsPath& path)
{
    const float l = Left();
    const float t = Top();
    const float r = Right();
    const float b = Bottom();
    const float hw = Width <= 1.0f ? 0.0f : Width * 0.5f;

    AddArc(path, r - 1 - RoundTR, t + RoundTR, RoundTR, 45, 22.5, 0);
    path.AddLine(r - 1, t + RoundTR, r - 1, b - RoundBR - 1);
    AddArc(path, r - 1 - RoundBR, b - 1 - RoundBR, RoundBR, 0, -22.5, -45);
    AddArc(path, r - 1 - RoundBR, b - 1 - RoundBR, RoundBR, -45, -67.5, -90);
    path.AddLine(r - RoundBR, b - 1, l + RoundBL, b - 1);
    AddArc(path, l + RoundBL, b - 1 - RoundBL, RoundBL, -90, -112.5, -135);
    AddArc(path, l + RoundBL, b - 1 - RoundBL, RoundBL, -135, -157.5, -180);
    path.AddLine(l + hw, t + RoundTL, l + hw, b - 1 - RoundBL);
    AddArc(path, l + RoundTL, t + RoundTL, RoundTL, -180, -202.5, -225);
    AddArc(path, l + RoundTL, t + RoundTL, RoundTL, -225, -247.5, -270);
    path.AddLine(l + RoundTL, t + hw, r - 1 - RoundTR, t + hw);
    AddArc(path, r - 1 - RoundTR, t + RoundTR, RoundTR, -270, -292.5, -315);
    return true;
}

// Operations

bool Frame::SetTopLeftColor(std::uint32_t color)
{
    const bool changed = TColor != color || LColor != color;
    TColor = LColor = color;
    return changed;
}

bool Frame::SetBottomRightColor(std::uint32_t color)
{
    const bool changed = BColor != color || RColor != color;
    BColor = RColor = color;
    return changed;
}
