#include "engine/PositionedWidget.h"

#include "platform/Graphics.h"
#include "platform/SolidBrush.h"
#include "platform/SystemSettings.h"
#include "support/ViewerFixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

// A widget that fills its rectangle with one colour and writes down each
// Draw with its bounds.
class Probe : public PositionedWidget {
public:
    Probe(Viewer* owner, std::string label, std::uint32_t colour, std::vector<std::string>& log)
        : PositionedWidget(owner), label(std::move(label)), colour(colour), log(log)
    {
    }

    bool Draw(platform::Graphics& graphics, const RectF& bounds) override
    {
        log.push_back(label + " " + Describe(bounds));
        const RectF r = GetRect();
        platform::SolidBrush brush(colour);
        return graphics.FillRectangle(brush, r.x, r.y, r.width, r.height);
    }
    bool IsOpaque() override { return (colour >> 24) == 0xFF; }

private:
    std::string label;
    std::uint32_t colour;
    std::vector<std::string>& log;
};

class Paint : public ViewerFixture {
protected:
    Probe& Add(const char* label, const char16_t* pos, std::uint32_t colour, const char16_t* option = u"")
    {
        auto probe = std::make_unique<Probe>(&viewer, label, colour, draws);
        const std::u16string name(label, label + std::char_traits<char>::length(label));
        probe->Load(MapOf({{u"Pos", pos}, {u"Name", name.c_str()}, {u"Option", option}}));
        Probe& added = *probe;
        viewer.AppendWidget(std::move(probe));
        return added;
    }

    std::uint32_t Pixel(int x, int y)
    {
        std::uint32_t argb = 0;
        EXPECT_TRUE(viewer.GetBackingBitmap()->GetPixel(x, y, argb)) << x << "," << y;
        return argb;
    }

    std::vector<std::string> draws;
};

TEST_F(Paint, OpaqueWidgetsGoFirstAndHideWhatLiesBelow)
{
    EXPECT_FALSE(viewer.PaintAll());
    EXPECT_FALSE(viewer.PaintRect({0, 0, 10, 10}));
    EXPECT_EQ(Describe(viewer.GetDirtyRect()), "0,0,0,0");

    ResizeView(100, 50);
    Add("back", u"L0,T0,L100,T50", 0xFF000000);
    Add("hidden", u"L10,T10,L20,T20", 0x80FF0000);
    Add("half", u"L40,T10,L80,T20", 0x800000FF);
    Add("invisible", u"L0,T0,L100,T50", 0xFFFF00FF, u"Invisible");
    Add("inverted", u"L90,T0,L80,T50", 0xFF00FFFF);
    Add("cover", u"L0,T0,L60,T30", 0xFFFFFFFF);
    Add("top", u"L50,T5,L70,T25", 0x4000FF00);
    ASSERT_TRUE(viewer.PaintAll());

    // Opaque ones top down, each only where nothing opaque above covers it;
    // then the others bottom up: hidden is never drawn, half only where
    // cover leaves it, and top over everything.
    const std::vector<std::string> expected = {
        "cover 0,0,60,30", "back 0,0,100,50", "half 60,10,20,10", "top 50,5,20,20",
    };
    EXPECT_EQ(draws, expected);
    EXPECT_EQ(Pixel(15, 15), 0xFFFFFFFFu);
    EXPECT_EQ(Pixel(99, 49), 0xFF000000u);
    EXPECT_EQ(Pixel(85, 45), 0xFF000000u);
    EXPECT_EQ(Describe(viewer.GetDirtyRect()), "0,0,100,50");

    // Only what a repaint touches is drawn.
    draws.clear();
    ASSERT_TRUE(viewer.PaintRect({90, 40, 5, 5}));
    EXPECT_EQ(draws, std::vector<std::string>{"back 90,40,5,5"});
}

TEST_F(Paint, TheScaleMapsLogicalUnitsToBitmapPixels)
{
    ResizeView(200, 20);
    viewer.Dpi = static_cast<float>(platform::GetScreenDpiX());
    viewer.Zoom = 1.25f;
    Add("back", u"L0,T0,L160,T16", 0xFF000000);
    Add("brush", u"L0,T0,L100,T8", 0xFF336699);
    ASSERT_TRUE(viewer.PaintAll());
    EXPECT_EQ(Pixel(124, 9), 0xFF336699u);
    EXPECT_EQ(Pixel(125, 9), 0xFF000000u);
    EXPECT_EQ(Pixel(0, 10), 0xFF000000u);

    viewer.LogicalOriginX = 20;
    draws.clear();
    ASSERT_TRUE(viewer.PaintAll());
    EXPECT_EQ(draws, (std::vector<std::string>{"brush 20,0,80,8", "back 20,0,140,16"}));
    EXPECT_EQ(Pixel(99, 9), 0xFF336699u);
    EXPECT_EQ(Pixel(100, 9), 0xFF000000u);
}

TEST_F(Paint, ChangesByNameRepaintTheWidgetWhereItNowStands)
{
    ResizeView(100, 50);
    Add("back", u"L0,T0,L100,T50", 0xFF000000);
    Add("box", u"L10,T10,L20,T20", 0xFFFF0000);
    Add("box", u"L30,T10,L40,T20", 0xFF00FF00);
    viewer.PaintAll();
    draws.clear();

    EXPECT_FALSE(viewer.SetWidgetAttribute(u"box", u"LPos", u"L10"));
    EXPECT_FALSE(viewer.SetWidgetAttribute(u"nobody", u"LPos", u"L0"));
    EXPECT_FALSE(viewer.SetWidgetBool(u"box", u"Enable", true));
    EXPECT_TRUE(draws.empty());

    // Only the first of two widgets of one name is reached. It covers the
    // repainted area, so nothing below it is drawn, and its old place keeps
    // its pixels until something repaints there.
    EXPECT_TRUE(viewer.SetWidgetAttribute(u"box", u"LPos", u"L15"));
    EXPECT_EQ(draws, std::vector<std::string>{"box 15,10,5,10"});
    EXPECT_EQ(Pixel(12, 12), 0xFFFF0000u);
    EXPECT_EQ(Pixel(35, 12), 0xFF00FF00u);
    EXPECT_EQ(Describe(viewer.GetDirtyRect()), "0,0,100,50");

    draws.clear();
    EXPECT_TRUE(viewer.SetWidgetBool(u"box", u"Visible", false));
    EXPECT_EQ(draws, std::vector<std::string>{"back 15,10,5,10"});
    EXPECT_EQ(Pixel(17, 12), 0xFF000000u);
}

} // namespace
