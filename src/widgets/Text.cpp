#include "widgets/Text.h"

#include "engine/Viewer.h"
#include "layouttext/AttributeMap.h"
#include "layouttext/ValueSyntax.h"
#include "platform/Font.h"
#include "platform/Graphics.h"
#include "platform/Pen.h"
#include "platform/SolidBrush.h"
#include "widgets/Colour.h"
#include "widgets/IconFont.h"

#include <cstdio>
#include <memory>

namespace {

template <typename Value>
bool Store(Value& field, const Value& value)
{
    if (field == value)
        return false;
    field = value;
    return true;
}

// The text as a section line holds it: backslashes doubled and line breaks
// written as the escape \r\n.
WideString EscapedForSection(const WideString& text)
{
    return text.Replaced(u"\\", u"\\\\").Replaced(u"\r\n", u"\\r\\n");
}

WideString FormatHex(std::uint32_t value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(value));
    return WideString::FromAscii(text);
}

} // namespace

Text::Text(Viewer* owner) : PositionedWidget(owner), FontName(GetIconFontName()) {}

// Overrideables

// True when a field changed, which makes the caller repaint.
bool Text::SetAttribute(const WideString& key, const WideString& value)
{
    if (key == u"Text")
        return Store(TextValue, value);
    if (key == u"Font") {
        // No percent form here: "50%" reads as 50 points.
        WideString face;
        if (!GetCsvItem(value, 1, face))
            face = GetIconFontName();
        bool changed = Store(FontName, face);
        const double size = GetCsvFloat(value, 10.0f);
        if (size > 0)
            changed |= Store(FontSize, size);
        return changed;
    }
    if (key == u"FontName")
        return Store(FontName, value);
    if (key == u"FontSize") {
        const std::int32_t size = ScanDecimalInt(value.View());
        return size > 0 && Store(FontSize, static_cast<double>(size));
    }
    if (key == u"VAlign")
        return Store(VAlign, ParseAlign(value));
    if (key == u"HAlign")
        return Store(HAlign, ParseAlign(value));
    if (key == u"Color")
        return Store(Color, ParseHexColor(value));
    if (key == u"NoWrap")
        return Store(NoWrap, value == u"true");
    if (key == u"OutlineSize") {
        const std::int32_t size = ScanDecimalInt(value.View());
        return size >= 0 && Store(OutlineSize, size);
    }
    // Decimal, unlike every other colour.
    if (key == u"OutlineColor")
        return Store(OutlineColor, static_cast<std::uint32_t>(ScanDecimalInt(value.View())));
    return PositionedWidget::SetAttribute(key, value);
}

// Draws the text in the widget's rectangle; bounds aren't needed, the clip
// does their work. With an outline the glyphs become a path that is
// stroked with round joins and then filled, measured in pixels at 96 per
// inch; plain text is measured in points, and families whose lines are
// spaced widely are drawn a tenth smaller. A family that doesn't exist
// falls back to the generic sans-serif one in plain mode and draws nothing
// in outline mode.
bool Text::Draw(platform::Graphics& graphics, const RectF&)
{
    platform::TextHintGuard hint(graphics, platform::kTextRenderingHintSystemDefault);
    platform::StringFormat format;
    format.SetAlignment(HAlign);
    format.SetLineAlignment(VAlign);
    if (NoWrap)
        format.SetFlags(platform::kStringFormatFlagsNoWrap);

    auto family = std::make_unique<platform::FontFamily>(FontName.View());
    if (!family->IsValid())
        family.reset();
    double size = DrawingSize() / (Owner != nullptr ? Owner->GetScale() : 1.0f);
    const std::int32_t style = Bold ? platform::kFontStyleBold : platform::kFontStyleRegular;
    double ratio = 1.0;
    if (family != nullptr) {
        const std::uint16_t emHeight = family->GetEmHeight(style);
        if (emHeight > 0)
            ratio = static_cast<double>(family->GetLineSpacing(style)) / emHeight;
    }
    const RectF rect = GetRect();

    if (OutlineSize > 0) {
        platform::SmoothingGuard smoothing(graphics);
        platform::GraphicsPath path;
        if (family != nullptr)
            path.AddString(TextValue.View(), *family, style, static_cast<float>(size * 96 / 72), rect.x, rect.y,
                           rect.width, rect.height, format);
        platform::Pen pen(OutlineColor, static_cast<float>(OutlineSize));
        pen.SetLineJoin(platform::kLineJoinRound);
        graphics.DrawPath(pen, path);
        platform::SolidBrush brush(Color);
        graphics.FillPath(brush, path);
        return true;
    }

    if (family != nullptr && ratio >= 1.25)
        size = size * 9 / 10;
    std::unique_ptr<platform::FontFamily> fallback;
    platform::FontFamily* used = family.get();
    if (used == nullptr) {
        fallback = platform::FontFamily::GenericSansSerif();
        used = fallback.get();
    }
    platform::SolidBrush brush(Color);
    if (used == nullptr)
        return false;
    platform::Font font(*used, static_cast<float>(size), style);
    return graphics.DrawString(TextValue.View(), font, rect.x, rect.y, rect.width, rect.height, format, brush);
}

// Each key only when present; then the common keys.
bool Text::Load(const AttributeMap& map)
{
    bool changed = false;
    if (map.Contains(u"Text"))
        changed |= Store(TextValue, map.GetValue(u"Text", {}, true));
    if (map.Contains(u"Color"))
        changed |= Store(Color, ParseHexColor(map.GetRaw(u"Color")));
    if (map.Contains(u"Font")) {
        // A percent size is a share of the widget's height; a plain one is
        // a whole number of points.
        const WideString value = map.GetRaw(u"Font");
        WideString size;
        const bool hasSize = GetCsvItem(value, 0, size);
        if (hasSize && size.Find(u'%') != WideString::npos) {
            changed |= Store(FontSize, 0.0);
            changed |= Store(FontPercent, ScanDecimalInt(size.View()) / 100.0);
        } else {
            const std::int32_t points = hasSize ? ScanDecimalInt(size.View()) : 10;
            if (points > 0)
                changed |= Store(FontSize, static_cast<double>(points));
        }
        WideString face;
        if (!GetCsvItem(value, 1, face))
            face = GetIconFontName();
        changed |= Store(FontName, face);
    }
    if (map.Contains(u"Align")) {
        changed |= Store(HAlign, ParseAlign(map.GetItemOr(u"Align", 0, u"L")));
        changed |= Store(VAlign, ParseAlign(map.GetItemOr(u"Align", 1, u"T")));
    }
    if (map.Contains(u"Option")) {
        changed |= Store(NoWrap, map.HasItem(u"Option", u"NoWrap"));
        changed |= Store(Bold, map.HasItem(u"Option", u"Bold"));
    }
    return PositionedWidget::Load(map) || changed;
}

bool Text::GetAttribute(const WideString& key, WideString& value)
{
    if (key == u"Text") {
        value = TextValue;
        return true;
    }
    if (key == u"NoWrap") {
        value = NoWrap ? u"true" : u"false";
        return true;
    }
    return PositionedWidget::GetAttribute(key, value);
}

// Writes a [Text] section. Unlike the common form it writes only when skip
// is true.
bool Text::SaveToText(WideString& text, WideString& options, bool skip)
{
    if (!skip)
        return false;
    text += u"[Text]\r\n";
    if (!TextValue.IsEmpty()) {
        text += u"Text=";
        text += EscapedForSection(TextValue);
        text += u"\r\n";
    }
    if (!FontName.IsEmpty()) {
        text += u"Font=";
        text += FormatF(FontSize);
        text += u',';
        text += FontName;
        text += u"\r\n";
    }
    text += u"Color=";
    text += FormatHex(Color);
    text += u"\r\n";
    if (NoWrap) {
        if (!options.IsEmpty())
            options += u',';
        options += u"NoWrap";
    }
    return Widget::SaveToText(text, options, false);
}

double Text::DrawingSize()
{
    if (FontSize > 0)
        return FontSize;
    return (Bottom() - Top()) * FontPercent;
}
