#pragma once

#include "engine/PositionedWidget.h"

#include <cstdint>

// A rectangle filled with one colour: the background of a layout, and the
// face that composite widgets lay under their parts.
class Brush : public PositionedWidget {
public:
    explicit Brush(Viewer* owner);

    // Overrideables
    bool SetAttribute(const WideString& key, const WideString& value) override;
    bool Draw(platform::Graphics& graphics, const RectF& bounds) override;
    bool Load(const AttributeMap& map) override;
    bool IsOpaque() override;

    std::uint32_t GetColor() const { return Color; }
    // For the widgets that paint their faces with a brush of their own.
    void SetColor(std::uint32_t color) { Color = color; }

private:
    std::uint32_t Color;
};

// The colour of a colour text: one of the names of the system's colours,
// or hexadecimal ARGB; a text that doesn't scan gives 0.
std::uint32_t ParseColourText(const WideString& text);
