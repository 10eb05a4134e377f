#pragma once

#include "engine/PositionedWidget.h"

#include <cstdint>

namespace platform {
class GraphicsPath;
}

// A rectangle with four edges of their own colours and four corners of
// their own radii: the raised or sunken look of buttons and text fields,
// and the outline that cuts the corners of a button's face. Always a
// member of such a widget, which places it by SetBounds before each use.
class Frame : public PositionedWidget {
public:
    explicit Frame(Viewer* owner);

    // Overrideables
    bool Draw(platform::Graphics& graphics, const RectF& bounds) override;
    bool Load(const AttributeMap& map) override;
    // Appends the outline of the whole rectangle to path, for clipping.
    virtual bool BuildPath(platform::GraphicsPath& path);

    // Operations
    bool SetTopLeftColor(std::uint32_t color);
    bool SetBottomRightColor(std::uint32_t color);

private:
    std::uint32_t TColor;
    std::uint32_t LColor;
    std::uint32_t BColor;
    std::uint32_t RColor;
    float RoundTL = 0;
    float RoundBL = 0;
    float RoundTR = 0;
    float RoundBR = 0;
    float Width = 1.0f;
};
