#include "widgets/Brush.h"

#include "layouttext/AttributeMap.h"
#include "platform/Graphics.h"
#include "platform/SolidBrush.h"
#include "widgets/Colour.h"

#include <algorithm>

// The system's colours are read when a text names them, never kept.
std::uint32_t ParseColourText(const WideString& text)
{
    if (text == u"DefaultFaceColor")
        return ButtonFaceColour();
    if (text == u"DefaultShadowColor" || text == u"DefaultGrayColor")
        return ButtonShadowColour();
    if (text == u"DefaultLightColor")
        return LightColour3d();
    return ParseHexColor(text);
}

Brush::Brush(Viewer* owner) : PositionedWidget(owner), Color(ButtonFaceColour()) {}

// Overrideables

bool Brush::SetAttribute(const WideString& key, const WideString& value)
{
    if (key == u"Color") {
        const std::uint32_t colour = ParseColourText(value);
        if (colour == Color)
            return false;
        Color = colour;
        return true;
    }
    return PositionedWidget::SetAttribute(key, value);
}

// Fills the part of the rectangle that lies within bounds. Bounds that miss
// the rectangle give a negative size, which fills nothing.
bool Brush::Draw(platform::Graphics& graphics, const RectF& bounds)
{
    const RectF rect = GetRect();
    const float left = std::max(rect.x, bounds.x);
    const float top = std::max(rect.y, bounds.y);
    const float right = std::min(rect.x + rect.width, bounds.x + bounds.width);
    const float bottom = std::min(rect.y + rect.height, bounds.y + bounds.height);
    platform::SolidBrush brush(Color);
    return graphics.FillRectangle(brush, left, top, right - left, bottom - top);
}

// The colour is read from its raw text, escapes and all.
bool Brush::Load(const AttributeMap& map)
{
    bool changed = false;
    if (map.Contains(u"Color")) {
        const std::uint32_t colour = ParseColourText(map.GetRaw(u"Color"));
        changed = colour != Color;
        Color = colour;
    }
    return PositionedWidget::Load(map) || changed;
}

// The painter may leave out what lies under a brush that lets nothing
// through.
bool Brush::IsOpaque()
{
    return (Color >> 24) == 0xFF;
}
