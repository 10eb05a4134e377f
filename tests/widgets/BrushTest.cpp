#include "widgets/Brush.h"
#include "widgets/WidgetFactory.h"

#include "platform/Bitmap.h"
#include "platform/Graphics.h"
#include "platform/SolidBrush.h"
#include "support/ViewerFixture.h"
#include "widgets/Colour.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

namespace {

class BrushTest : public ViewerFixture {
public:
    BrushTest() : ViewerFixture(WidgetFactory) {}
};

// Colour texts name system colours or hold hex digits; the factory knows
// the brush by its exact name only.
TEST_F(BrushTest, ColourTextsAndTheFactorysNamesAreExact)
{
    Brush brush(&viewer);
    EXPECT_EQ(brush.GetColor(), ButtonFaceColour());
    EXPECT_TRUE(brush.IsOpaque());

    EXPECT_EQ(ParseColourText(u"DefaultGrayColor"), ParseColourText(u"DefaultShadowColor"));
    EXPECT_EQ(ParseColourText(u"DefaultShadowColor"), ButtonShadowColour());
    EXPECT_EQ(ParseColourText(u"DefaultLightColor"), LightColour3d());
    EXPECT_EQ(ParseColourText(u"DefaultFaceColor"), ButtonFaceColour());
    EXPECT_EQ(ParseColourText(u"defaultfacecolor"), 0xDEFAu);

    EXPECT_TRUE(brush.SetAttribute(u"Color", u"12345678"));
    EXPECT_EQ(brush.GetColor(), 0x12345678u);
    EXPECT_FALSE(brush.IsOpaque());
    EXPECT_FALSE(brush.SetAttribute(u"Color", u"0x12345678"));
    // Load reads the raw text: quotes are not taken off.
    EXPECT_TRUE(brush.Load(MapOf({{u"Color", u"\"FF0000FF\""}})));
    EXPECT_EQ(brush.GetColor(), 0u);
    EXPECT_TRUE(brush.Load(MapOf({{u"Color", u"DefaultFaceColor"}})));
    EXPECT_EQ(brush.GetColor(), ButtonFaceColour());
    EXPECT_FALSE(brush.Load(MapOf({{u"Color", u"DefaultFaceColor"}})));

    std::unique_ptr<Widget> widget;
    EXPECT_TRUE(WidgetFactory(u"Brush", &viewer, widget));
    ASSERT_NE(widget, nullptr);
    EXPECT_NE(dynamic_cast<Brush*>(widget.get()), nullptr);
    for (const char16_t* name : {u"brush", u"Frame", u"TextBox", u"Viewer", u""}) {
        EXPECT_FALSE(WidgetFactory(name, &viewer, widget));
        EXPECT_EQ(widget, nullptr);
    }
}

TEST_F(BrushTest, DrawFillsItsRectangleWithinTheBounds)
{
    platform::WindowContextScope screen(nullptr);
    platform::Graphics screenGraphics(screen.Context());
    platform::Bitmap bitmap(12, 10, screenGraphics);
    ASSERT_TRUE(bitmap.IsValid());
    platform::Graphics graphics(bitmap);
    platform::SolidBrush white(0xFFFFFFFF);
    ASSERT_TRUE(graphics.FillRectangle(white, 0, 0, 12, 10));

    Brush brush(&viewer);
    brush.Load(MapOf({{u"Pos", u"L2,T2,L8,T6"}, {u"Color", u"FF112233"}}));
    EXPECT_TRUE(brush.Draw(graphics, {0, 0, 5, 10}));
    // Bounds that miss the rectangle fill nothing.
    brush.Draw(graphics, {9, 0, 3, 10});

    std::uint32_t pixel = 0;
    const struct {
        int x, y;
        std::uint32_t argb;
    } probes[] = {{2, 2, 0xFF112233}, {4, 5, 0xFF112233}, {5, 3, 0xFFFFFFFF}, {1, 3, 0xFFFFFFFF},
                  {3, 6, 0xFFFFFFFF}, {3, 1, 0xFFFFFFFF}, {9, 3, 0xFFFFFFFF}};
    for (const auto& probe : probes) {
        ASSERT_TRUE(bitmap.GetPixel(probe.x, probe.y, pixel));
        EXPECT_EQ(pixel, probe.argb) << probe.x << "," << probe.y;
    }
}

} // namespace
