#include "widgets/Button.h"

#include "layouttext/AttributeMap.h"
#include "layouttext/ValueSyntax.h"
#include "platform/Graphics.h"
#include "platform/Pen.h"
#include "widgets/Brush.h"
#include "widgets/Colour.h"
#include "widgets/IconFont.h"

#include <cstdio>

namespace {

constexpr std::int32_t kCentre = 1;

} // namespace

Button::Button(Viewer* owner) : Pushable(owner), Caption(owner), Edge(owner)
{
    Caption.SetAlignment(kCentre, kCentre);
}

// Overrideables

bool Button::SetAttribute(const WideString& key, const WideString& value)
{
    if (key == u"FaceColor")
        return ParseFaceColor(value);
    if (key == u"TextColor") {
        const std::uint32_t color = ParseHexColor(value);
        const bool changed = color != TextColor;
        TextColor = color;
        return changed;
    }
    if (key == u"Text")
        return Caption.SetAttribute(u"Text", value);
    return Pushable::SetAttribute(key, value);
}

// The face is filled inside the edge's outline, with the graphics' state
// saved around that clip; the edge and the caption follow the look. A
// button without edge and face shows only its caption until the mouse
// comes over it.
bool Button::Draw(platform::Graphics& graphics, const RectF& bounds)
{
    const Look look = GetLook();
    const RectF rect = GetRect();
    Edge.SetBounds(rect);

    const std::uint32_t face = FaceColorOf(look);
    if ((face >> 24) != 0) {
        platform::GraphicsPath outline;
        Edge.BuildPath(outline);
        const platform::GraphicsState saved = graphics.Save();
        graphics.SetClipPath(outline);
        Brush brush(Owner);
        brush.SetColor(face);
        brush.SetBounds(rect);
        brush.Draw(graphics, bounds);
        graphics.Restore(saved);
    }

    const std::uint32_t highlight = ButtonHighlightColour();
    const std::uint32_t shadow = ButtonShadowColour();
    RectF captionRect = rect;
    std::uint32_t captionColor = TextColor;
    bool drawEdge = HasEdge;
    switch (look) {
    case kNormal:
        Edge.SetTopLeftColor(highlight);
        Edge.SetBottomRightColor(shadow);
        break;
    case kPushed:
        drawEdge = true;
        Edge.SetTopLeftColor(shadow);
        Edge.SetBottomRightColor(highlight);
        captionRect.x += 1.0f;
        captionRect.y += 1.0f;
        break;
    case kHover:
        drawEdge = true;
        Edge.SetTopLeftColor(highlight);
        Edge.SetBottomRightColor(shadow);
        break;
    case kDisabled:
        Edge.SetTopLeftColor(shadow);
        Edge.SetBottomRightColor(shadow);
        captionColor = shadow;
        break;
    }
    if (drawEdge)
        Edge.Draw(graphics, bounds);

    Caption.SetColor(captionColor);
    Caption.SetBounds(captionRect);
    Caption.SetAlignment(kCentre, kCentre);
    Caption.Draw(graphics, bounds);
    return true;
}

// The caption takes only Text, Font and Outline of the section; its
// colour, alignment and options are the button's to decide. Width and
// Round reach the edge only when the section rounds it.
bool Button::Load(const AttributeMap& map)
{
    bool changed = false;
    if (map.Contains(u"Text"))
        changed |= Caption.SetAttribute(u"Text", map.GetValue(u"Text", {}, true));
    if (map.Contains(u"TextColor")) {
        const std::uint32_t color = ParseHexColor(map.GetRaw(u"TextColor"));
        changed |= color != TextColor;
        TextColor = color;
    }
    if (map.Contains(u"FaceColor"))
        changed |= ParseFaceColor(map.GetRaw(u"FaceColor"));
    if (map.Contains(u"Font")) {
        WideString size;
        const std::int32_t points = map.GetItem(u"Font", 0, size) ? ScanDecimalInt(size.View()) : 10;
        if (points > 0)
            Caption.SetFontSize(points);
        WideString face;
        if (!map.GetItem(u"Font", 1, face))
            face = GetIconFontName();
        Caption.SetFontName(face);
        changed = true;
    }
    if (map.Contains(u"Outline")) {
        WideString item;
        const std::int32_t size = map.GetItem(u"Outline", 0, item) ? ScanDecimalInt(item.View()) : 0;
        const std::uint32_t color = map.GetItem(u"Outline", 1, item) ? ParseHexColor(item) : 0xFFFFFFFF;
        if (size >= 0)
            Caption.SetOutline(size, color);
        changed = true;
    }
    if (map.Contains(u"Round"))
        Edge.Load(map);
    if (map.Contains(u"Option")) {
        const bool hasEdge = map.HasItem(u"Option", u"Edge");
        changed |= hasEdge != HasEdge;
        HasEdge = hasEdge;
    }
    return Pushable::Load(map) || changed;
}

bool Button::GetAttribute(const WideString& key, WideString& value)
{
    if (key == u"FaceColor") {
        char text[16];
        std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(FaceColorOf(kNormal)));
        value = WideString::FromAscii(text);
        return true;
    }
    return Pushable::GetAttribute(key, value);
}

// Worked out anew at each Draw: disabled first, then pushed (by the flag
// or by a press under the mouse), then hover.
Button::Look Button::GetLook() const
{
    if (!IsEnabled())
        return kDisabled;
    if (Pushed || (Hover && Clicked))
        return kPushed;
    if (Hover)
        return kHover;
    return kNormal;
}

// The face colours are written as normal, pushed, hover, disabled. Pushed
// and hover fall back to the normal colour; the disabled face has no
// fallback and stays unpainted when it isn't given.
std::uint32_t Button::FaceColorOf(Look look) const
{
    if (FaceColors.IsEmpty())
        return 0;
    const auto index = static_cast<std::size_t>(look);
    if (index < FaceColors.Count())
        return FaceColors.At(index);
    return look == kDisabled ? 0 : FaceColors.At(0);
}

// Each item of the comma list, cut as the items of a section's list are:
// "DefaultFaceColor" as the system's colour, any other as hex.
bool Button::ParseFaceColor(const WideString& text)
{
    if (text == FaceColor)
        return false;
    FaceColor = text;
    FaceColors.Clear();
    if (text.IsEmpty())
        return true;
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = text.Find(u',', start);
        const WideString item = text.Substring(start, comma == WideString::npos ? WideString::npos : comma - start);
        FaceColors.Add(item == u"DefaultFaceColor" ? ButtonFaceColour() : ParseHexColor(item));
        if (comma == WideString::npos)
            return true;
        start = comma + 1;
    }
}
