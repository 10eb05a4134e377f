#pragma once

#include "engine/PositionedWidget.h"

#include <cstdint>

// One block of text inside the widget's rectangle, in a named font of a
// size in points or relative to the widget's height, plain or outlined.
// Button and EditableText own one each for their captions. Every Draw
// builds its GDI+ objects from the fields and deletes them again.
class Text : public PositionedWidget {
public:
    explicit Text(Viewer* owner);

    // Overrideables
    bool SetAttribute(const WideString& key, const WideString& value) override;
    bool Draw(platform::Graphics& graphics, const RectF& bounds) override;
    bool Load(const AttributeMap& map) override;
    bool GetAttribute(const WideString& key, WideString& value) override;
    bool SaveToText(WideString& text, WideString& options, bool skip) override;

    // Operations
    // For the widgets that own a caption: the fields set directly.
    void SetCaptionText(const WideString& text) { TextValue = text; }
    const WideString& GetCaptionText() const { return TextValue; }
    void SetNoWrap(bool noWrap) { NoWrap = noWrap; }
    bool IsNoWrap() const { return NoWrap; }
    void SetColor(std::uint32_t color) { Color = color; }
    void SetFontSize(double size) { FontSize = size; }
    void SetFontName(const WideString& name) { FontName = name; }
    void SetOutline(std::int32_t size, std::uint32_t color)
    {
        OutlineSize = size;
        OutlineColor = color;
    }
    void SetAlignment(std::int32_t horizontal, std::int32_t vertical)
    {
        HAlign = horizontal;
        VAlign = vertical;
    }

private:
    // The size in points that a Draw uses, before the scale.
    double DrawingSize();

    WideString TextValue;
    WideString FontName;
    std::uint32_t Color = 0xFF000000;
    double FontSize = 10.0;
    double FontPercent = 0.0;
    std::int32_t HAlign = 0;
    std::int32_t VAlign = 0;
    bool NoWrap = false;
    bool Bold = false;
    std::int32_t OutlineSize = 0;
    std::uint32_t OutlineColor = 0xFFFFFFFF;
};
