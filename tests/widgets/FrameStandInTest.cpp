#include "widgets/Frame.h"

#include "platform/Graphics.h"
#include "platform/standin/TestHooks.h"
#include "support/StandInViewerFixture.h"
#include "widgets/Colour.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace {

using platform::testing::DrawnPath;

// The smallest rectangle around the points of the paths, as
// "left,top right,bottom".
std::string Box(const std::vector<DrawnPath>& paths)
{
    float left = 1e9f, top = 1e9f, right = -1e9f, bottom = -1e9f;
    for (const DrawnPath& path : paths) {
        for (const std::string& element : path.elements) {
            std::istringstream in(element.substr(element.find(' ')));
            float x = 0, y = 0;
            char comma = 0;
            while (in >> x >> comma >> y) {
                left = std::min(left, x);
                top = std::min(top, y);
                right = std::max(right, x);
                bottom = std::max(bottom, y);
            }
        }
    }
    std::ostringstream text;
    text << left << "," << top << " " << right << "," << bottom;
    return text.str();
}

// A frame at 10,20, 30 by 40 units, and what it strokes, as the stand-in
// records it.
class FrameStandIn : public StandInViewerFixture {
protected:
    std::vector<DrawnPath> Draw(const AttributeMap& map)
    {
        frame = std::make_unique<Frame>(&viewer);
        frame->Load(map);
        frame->SetBounds({10, 20, 30, 40});
        return Draw();
    }
    std::vector<DrawnPath> Draw()
    {
        platform::Graphics graphics(*viewer.GetBackingBitmap());
        platform::testing::TakeDrawnPaths();
        frame->Draw(graphics, {});
        return platform::testing::TakeDrawnPaths();
    }
    static std::vector<std::uint32_t> Colours(const std::vector<DrawnPath>& paths)
    {
        std::vector<std::uint32_t> colours;
        for (const DrawnPath& path : paths)
            colours.push_back(path.colour);
        return colours;
    }

    std::unique_ptr<Frame> frame;
};

using ColourList = std::vector<std::uint32_t>;

// Four edges, the right one first and the top one last, each in its
// colour. A thin frame runs on the rectangle's own pixels, right and bottom
// edges one unit in; a wide pen stays inside, round corners too.
TEST_F(FrameStandIn, EdgesInTheirColoursInsideTheRectangle)
{
    const std::vector<DrawnPath> drawn = Draw(MapOf(
        {{u"TColor", u"FF000001"}, {u"LColor", u"FF000002"}, {u"RColor", u"FF000003"}, {u"BColor", u"FF000004"}}));
    ASSERT_EQ(drawn.size(), 4u);
    EXPECT_EQ(Colours(drawn), (ColourList{0xFF000003, 0xFF000004, 0xFF000002, 0xFF000001}));
    const char* boxes[] = {"39,20 39,59", "10,59 39,59", "10,20 10,59", "10,20 39,20"};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Box({drawn[i]}), boxes[i]) << i;
        EXPECT_FLOAT_EQ(drawn[i].penWidth, 1);
        EXPECT_EQ(drawn[i].smoothingMode, platform::kSmoothingModeAntiAlias);
    }
    const std::vector<DrawnPath> wide = Draw(MapOf({{u"Width", u"2"}, {u"Round", u"4,6,8,3"}}));
    EXPECT_FLOAT_EQ(wide.at(0).penWidth, 2);
    EXPECT_EQ(Box(wide), "11,21 38,58");

    // Raised and Sunken override every colour key, and Raised wins; a
    // negative width is no width. The setters colour two edges each.
    const std::uint32_t light = ButtonHighlightColour();
    const std::uint32_t dark = ButtonShadowColour();
    EXPECT_EQ(Colours(Draw(MapOf({{u"AllColor", u"FF123456"}, {u"Option", u"Sunken"}}))),
              (ColourList{light, light, dark, dark}));
    const std::vector<DrawnPath> raised = Draw(MapOf({{u"Option", u"Sunken,Raised"}, {u"Width", u"-3"}}));
    EXPECT_EQ(Colours(raised), (ColourList{dark, dark, light, light}));
    EXPECT_FLOAT_EQ(raised.at(0).penWidth, 1);
    frame->SetTopLeftColor(0xFF00FF00);
    frame->SetBottomRightColor(0xFF0000FF);
    EXPECT_EQ(Colours(Draw()), (ColourList{0xFF0000FF, 0xFF0000FF, 0xFF00FF00, 0xFF00FF00}));
}

} // namespace
