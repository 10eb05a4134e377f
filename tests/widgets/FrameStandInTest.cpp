#include "widgets/Frame.h"

#include "layouttext/AttributeMap.h"
#include "platform/Graphics.h"
#include "platform/Pen.h"
#include "platform/standin/TestHooks.h"
#include "support/ViewerFixture.h"
#include "widgets/Colour.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace {

using platform::testing::DrawnPath;

struct Point {
    float x, y;
};
using Points = std::vector<Point>;

// A recorded path as numbers: all its points in order, and each line's and
// each curve's points apart.
struct Shape {
    Points points;
    std::vector<Points> lines, curves;
};

Shape ShapeOf(const DrawnPath& path)
{
    Shape shape;
    for (const std::string& element : path.elements) {
        std::istringstream in(element);
        std::string kind;
        in >> kind;
        Points points;
        Point p{};
        char comma = 0;
        while (in >> p.x >> comma >> p.y)
            points.push_back(p);
        shape.points.insert(shape.points.end(), points.begin(), points.end());
        (kind == "curve" ? shape.curves : shape.lines).push_back(points);
    }
    return shape;
}

// The smallest rectangle around the points, as "left,top right,bottom".
std::string Box(const Points& points)
{
    float left = 1e9f, top = 1e9f, right = -1e9f, bottom = -1e9f;
    for (const Point& p : points) {
        left = std::min(left, p.x);
        top = std::min(top, p.y);
        right = std::max(right, p.x);
        bottom = std::max(bottom, p.y);
    }
    std::ostringstream text;
    text << left << "," << top << " " << right << "," << bottom;
    return text.str();
}

// The frame stands at 10,20 and is 30 by 40 units. Its radii in reading
// order: top-left, top-right, bottom-left, bottom-right.
constexpr float kL = 10, kT = 20, kR = 40, kB = 60;
const float kRadii[4] = {4, 6, 8, 3};

// Every curve lies on the circle of its corner's radius, whose centre is
// the radius (and the inset) in from both edges of that corner.
void ExpectCornersOnTheirCircles(const Shape& shape, float inset)
{
    for (const Points& curve : shape.curves) {
        const bool right = curve[1].x > (kL + kR) / 2;
        const bool bottom = curve[1].y > (kT + kB) / 2;
        const float radius = kRadii[(bottom ? 2 : 0) + (right ? 1 : 0)];
        const float cx = right ? kR - 1 - inset - radius : kL + inset + radius;
        const float cy = bottom ? kB - 1 - inset - radius : kT + inset + radius;
        for (const Point& p : curve)
            EXPECT_NEAR(std::hypot(p.x - cx, p.y - cy), radius, 1e-3) << p.x << "," << p.y;
    }
}

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
        frame->SetBounds({kL, kT, kR - kL, kB - kT});
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
    const std::vector<DrawnPath> drawn = Draw(Make({{u"TColor", u"FF000001"}, {u"LColor", u"FF000002"},
                                                    {u"RColor", u"FF000003"}, {u"BColor", u"FF000004"}}));
    ASSERT_EQ(drawn.size(), 4u);
    // Each edge on the rectangle's own pixels, right and bottom one unit in.
    const char* boxes[] = {"39,20 39,59", "10,59 39,59", "10,20 10,59", "10,20 39,20"};
    const std::uint32_t colours[] = {0xFF000003, 0xFF000004, 0xFF000002, 0xFF000001};
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(Box(ShapeOf(drawn[i]).points), boxes[i]);
        EXPECT_EQ(drawn[i].colour, colours[i]);
        EXPECT_FLOAT_EQ(drawn[i].penWidth, 1);
        EXPECT_EQ(drawn[i].smoothingMode, platform::kSmoothingModeAntiAlias);
    }
}

TEST_F(FrameStandIn, WidePensStayInsideAndRoundCornersSplitAtTheirDiagonals)
{
    const std::vector<DrawnPath> drawn = Draw(Make({{u"Width", u"2"}, {u"Round", u"4,6,8,3"}}));
    ASSERT_EQ(drawn.size(), 4u);
    Points all;
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        const Shape edge = ShapeOf(drawn[i]);
        all.insert(all.end(), edge.points.begin(), edge.points.end());
        EXPECT_FLOAT_EQ(drawn[i].penWidth, 2);
        EXPECT_EQ(edge.curves.size(), 2u);
        ExpectCornersOnTheirCircles(edge, 1);
        // Each edge ends where the next begins: at its corner's diagonal,
        // where the colours change.
        const Point end = edge.points.back();
        const Point start = ShapeOf(drawn[(i + 1) % 4]).points.front();
        EXPECT_NEAR(end.x, start.x, 1e-3);
        EXPECT_NEAR(end.y, start.y, 1e-3);
    }
    // The pen's middle runs half a pen in, so that the pen stays inside.
    EXPECT_EQ(Box(all), "11,21 38,58");
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
    for (const bool square : {true, false}) {
        SCOPED_TRACE(square ? "square" : "round");
        platform::GraphicsPath path;
        EXPECT_TRUE(Make({{u"Width", u"1.5"}, {u"Round", square ? u"0" : u"4,6,8,3"}}).BuildPath(path));
        platform::Graphics graphics(*viewer.GetBackingBitmap());
        platform::Pen pen(0xFF000000, 1);
        platform::testing::TakeDrawnPaths();
        graphics.DrawPath(pen, path);
        const std::vector<DrawnPath> drawn = platform::testing::TakeDrawnPaths();
        ASSERT_EQ(drawn.size(), 1u);
        const Shape shape = ShapeOf(drawn[0]);
        EXPECT_EQ(Box(shape.points), square ? "10,20 40,59" : "10,20 39,59");
        // The right, bottom, left and top lines, in this order: only the
        // left and the top move in.
        ASSERT_EQ(shape.lines.size(), 4u);
        const float lineAt[] = {kR - 1, kB - 1, kL + 0.75f, kT + 0.75f};
        for (int i = 0; i < 4; ++i) {
            const Points& line = shape.lines[i];
            EXPECT_FLOAT_EQ(i % 2 == 0 ? line[0].x : line[0].y, lineAt[i]) << i;
            EXPECT_FLOAT_EQ(i % 2 == 0 ? line[1].x : line[1].y, lineAt[i]) << i;
        }
        EXPECT_EQ(shape.curves.size(), square ? 0u : 8u);
        ExpectCornersOnTheirCircles(shape, 0);
    }
}

} // namespace
