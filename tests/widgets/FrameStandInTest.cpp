#include "widgets/Frame.h"

#include "layouttext/AttributeMap.h"
#include "platform/Graphics.h"
#include "platform/Pen.h"
#include "platform/standin/TestHooks.h"
#include "support/ViewerFixture.h"
#include "widgets/Colour.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using platform::testing::DrawnPath;

// What Frame strokes and outlines, as the stand-in records it.
class FrameStandIn : public ViewerFixture {
protected:
    void SetUp() override
    {
        ViewerFixture::SetUp();
        platform::testing::ResetStandIn();
        ResizeView(100, 100);
    }
    void TearDown() override
    {
        ViewerFixture::TearDown();
        platform::testing::ResetStandIn();
    }

    Frame& Make(std::initializer_list<std::pair<const char16_t*, const char16_t*>> keys)
    {
        AttributeMap map;
        for (const auto& [key, value] : keys)
            map.Set(key, value);
        frame = std::make_unique<Frame>(&viewer);
        frame->Load(map);
        frame->SetBounds({10, 20, 30, 40});
        return *frame;
    }

    std::vector<DrawnPath> Draw(Frame& drawn)
    {
        platform::Graphics graphics(*viewer.GetBackingBitmap());
        platform::testing::TakeDrawnPaths();
        drawn.Draw(graphics, {});
        return platform::testing::TakeDrawnPaths();
    }

    std::unique_ptr<Frame> frame;
};

TEST_F(FrameStandIn, SquareFrameIsFourEdgesRightFirstTopLast)
{
    Frame& square = Make({{u"TColor", u"FF000001"}, {u"LColor", u"FF000002"}, {u"RColor", u"FF000003"},
                          {u"BColor", u"FF000004"}});
    const std::vector<DrawnPath> drawn = Draw(square);
    ASSERT_EQ(drawn.size(), 4u);
    EXPECT_EQ(drawn[0].elements, std::vector<std::string>{"line 39,20 39,59"});
    EXPECT_EQ(drawn[0].colour, 0xFF000003u);
    EXPECT_EQ(drawn[1].elements, std::vector<std::string>{"line 10,59 39,59"});
    EXPECT_EQ(drawn[1].colour, 0xFF000004u);
    EXPECT_EQ(drawn[2].elements, std::vector<std::string>{"line 10,20 10,59"});
    EXPECT_EQ(drawn[2].colour, 0xFF000002u);
    EXPECT_EQ(drawn[3].elements, std::vector<std::string>{"line 10,20 39,20"});
    EXPECT_EQ(drawn[3].colour, 0xFF000001u);
    EXPECT_FLOAT_EQ(drawn[3].penWidth, 1);
    EXPECT_EQ(drawn[3].smoothingMode, platform::kSmoothingModeAntiAlias);
}

TEST_F(FrameStandIn, WidePensStayInsideAndCornersSplitAtTheDiagonal)
{
    Frame& round = Make({{u"Width", u"2"}, {u"Round", u"4"}});
    const std::vector<DrawnPath> drawn = Draw(round);
    ASSERT_EQ(drawn.size(), 4u);
    // Only the top-left corner is round: the left edge ends in its lower
    // half and the top edge begins with its upper half.
    EXPECT_EQ(drawn[0].elements, std::vector<std::string>{"line 38,20 38,58"});
    ASSERT_EQ(drawn[2].elements.size(), 2u);
    EXPECT_EQ(drawn[2].elements[0], "line 11,24 11,59");
    EXPECT_EQ(drawn[2].elements[1], "curve 11,25 11.3045,23.4693 12.1716,22.1716");
    ASSERT_EQ(drawn[3].elements.size(), 2u);
    EXPECT_EQ(drawn[3].elements[0], "curve 12.1716,22.1716 13.4693,21.3045 15,21");
    EXPECT_FLOAT_EQ(drawn[3].penWidth, 2);
}

TEST_F(FrameStandIn, OptionsOverrideColourKeysAndSettersTellOfChange)
{
    const std::uint32_t highlight = ButtonHighlightColour();
    const std::uint32_t shadow = ButtonShadowColour();
    std::vector<DrawnPath> drawn = Draw(Make({{u"AllColor", u"FF123456"}, {u"Option", u"Sunken"}}));
    ASSERT_EQ(drawn.size(), 4u);
    EXPECT_EQ(drawn[0].colour, highlight);
    EXPECT_EQ(drawn[3].colour, shadow);
    drawn = Draw(Make({{u"Option", u"Sunken,Raised"}, {u"Width", u"-3"}}));
    EXPECT_EQ(drawn[0].colour, shadow);
    EXPECT_EQ(drawn[3].colour, highlight);
    EXPECT_FLOAT_EQ(drawn[0].penWidth, 1);

    EXPECT_FALSE(frame->SetTopLeftColor(highlight));
    EXPECT_TRUE(frame->SetTopLeftColor(0xFF00FF00));
    EXPECT_TRUE(frame->SetBottomRightColor(0xFF0000FF));
    EXPECT_FALSE(frame->SetBottomRightColor(0xFF0000FF));
}

TEST_F(FrameStandIn, TheClippingOutlineMovesLeftAndTopInByHalfAWidePen)
{
    Frame& outline = Make({{u"Width", u"1.5"}});
    platform::GraphicsPath path;
    EXPECT_TRUE(outline.BuildPath(path));
    platform::Graphics graphics(*viewer.GetBackingBitmap());
    platform::Pen pen(0xFF000000, 1);
    platform::testing::TakeDrawnPaths();
    graphics.DrawPath(pen, path);
    const std::vector<DrawnPath> drawn = platform::testing::TakeDrawnPaths();
    ASSERT_EQ(drawn.size(), 1u);
    const std::vector<std::string> expected = {"line 39,20 39,59", "line 40,59 10,59", "line 10.75,20 10.75,59",
                                               "line 10,20.75 39,20.75"};
    EXPECT_EQ(drawn[0].elements, expected);
}

} // namespace
