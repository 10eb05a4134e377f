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
