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

// A recorded path as numbers: all its points in order, and each line's and
// each curve's points apart.
struct Shape {
    std::vector<Point> points;
    std::vector<std::vector<Point>> lines;
    std::vector<std::vector<Point>> curves;
    float left = 1e9f, top = 1e9f, right = -1e9f, bottom = -1e9f;
};

Shape ShapeOf(const DrawnPath& path)
{
    Shape shape;
    for (const std::string& element : path.elements) {
        std::istringstream in(element);
        std::string kind;
        in >> kind;
        std::vector<Point> points;
        Point p{};
        char comma = 0;
        while (in >> p.x >> comma >> p.y) {
            points.push_back(p);
            shape.left = std::min(shape.left, p.x);
            shape.top = std::min(shape.top, p.y);
            shape.right = std::max(shape.right, p.x);
            shape.bottom = std::max(shape.bottom, p.y);
        }
        shape.points.insert(shape.points.end(), points.begin(), points.end());
        (kind == "curve" ? shape.curves : shape.lines).push_back(points);
    }
    return shape;
}

// The frame stands at 10,20 and is 30 by 40 units. Radii in reading order:
// top-left, top-right, bottom-left, bottom-right.
constexpr float kL = 10, kT = 20, kR = 40, kB = 60;

// Every curve lies on the circle of its corner's radius, whose centre is
// the radius (and the inset) in from both edges of that corner.
void ExpectCornersOnTheirCircles(const Shape& shape, const float radii[4], float inset)
{
    for (const std::vector<Point>& curve : shape.curves) {
        const bool right = curve[1].x > (kL + kR) / 2;
        const bool bottom = curve[1].y > (kT + kB) / 2;
        const float radius = radii[(bottom ? 2 : 0) + (right ? 1 : 0)];
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
    Frame& square = Make({{u"TColor", u"FF000001"}, {u"LColor", u"FF000002"}, {u"RColor", u"FF000003"},
                          {u"BColor", u"FF000004"}});
    const std::vector<DrawnPath> drawn = Draw(square);
    ASSERT_EQ(drawn.size(), 4u);
    // Each edge on the rectangle's own pixels, right and bottom one unit in.
    const struct {
        std::uint32_t colour;
        float left, top, right, bottom;
    } edges[] = {
        {0xFF000003, kR - 1, kT, kR - 1, kB - 1},
        {0xFF000004, kL, kB - 1, kR - 1, kB - 1},
        {0xFF000002, kL, kT, kL, kB - 1},
        {0xFF000001, kL, kT, kR - 1, kT},
    };
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        const Shape shape = ShapeOf(drawn[i]);
        EXPECT_EQ(drawn[i].colour, edges[i].colour);
        EXPECT_FLOAT_EQ(drawn[i].penWidth, 1);
        EXPECT_EQ(drawn[i].smoothingMode, platform::kSmoothingModeAntiAlias);
        EXPECT_TRUE(shape.curves.empty());
        EXPECT_FLOAT_EQ(shape.left, edges[i].left);
        EXPECT_FLOAT_EQ(shape.top, edges[i].top);
        EXPECT_FLOAT_EQ(shape.right, edges[i].right);
        EXPECT_FLOAT_EQ(shape.bottom, edges[i].bottom);
    }
}

TEST_F(FrameStandIn, WidePensStayInsideAndRoundCornersSplitAtTheirDiagonals)
{
    const float radii[4] = {4, 6, 8, 3};
    const std::vector<DrawnPath> drawn = Draw(Make({{u"Width", u"2"}, {u"Round", u"4,6,8,3"}}));
    ASSERT_EQ(drawn.size(), 4u);
    std::vector<Shape> edges;
    for (const DrawnPath& path : drawn) {
        edges.push_back(ShapeOf(path));
        const Shape& edge = edges.back();
        EXPECT_FLOAT_EQ(path.penWidth, 2);
        // The pen's middle runs half a pen in, so that it stays inside.
        EXPECT_GE(edge.left, kL + 1);
        EXPECT_GE(edge.top, kT + 1);
        EXPECT_LE(edge.right, kR - 2);
        EXPECT_LE(edge.bottom, kB - 2);
        EXPECT_EQ(edge.curves.size(), 2u);
        ExpectCornersOnTheirCircles(edge, radii, 1);
    }
    // Each edge ends where the next begins: at its corner's diagonal, where
    // the colours change.
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        const Point end = edges[i].points.back();
        const Point start = edges[(i + 1) % 4].points.front();
        EXPECT_NEAR(end.x, start.x, 1e-3);
        EXPECT_NEAR(end.y, start.y, 1e-3);
    }
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
    const float radii[4] = {4, 6, 8, 3};
    for (const bool square : {true, false}) {
        SCOPED_TRACE(square ? "square" : "round");
        Frame& outline = Make({{u"Width", u"1.5"}, {u"Round", square ? u"0" : u"4,6,8,3"}});
        platform::GraphicsPath path;
        EXPECT_TRUE(outline.BuildPath(path));
        platform::Graphics graphics(*viewer.GetBackingBitmap());
        platform::Pen pen(0xFF000000, 1);
        platform::testing::TakeDrawnPaths();
        graphics.DrawPath(pen, path);
        const std::vector<DrawnPath> drawn = platform::testing::TakeDrawnPaths();
        ASSERT_EQ(drawn.size(), 1u);
        const Shape shape = ShapeOf(drawn[0]);
        EXPECT_GE(shape.left, kL);
        EXPECT_GE(shape.top, kT);
        EXPECT_LE(shape.right, kR);
        EXPECT_LE(shape.bottom, kB - 1);
        // The right, bottom, left and top lines, in this order.
        ASSERT_EQ(shape.lines.size(), 4u);
        EXPECT_FLOAT_EQ(shape.lines[0][0].x, kR - 1);
        EXPECT_FLOAT_EQ(shape.lines[0][1].x, kR - 1);
        EXPECT_FLOAT_EQ(shape.lines[1][0].y, kB - 1);
        EXPECT_FLOAT_EQ(shape.lines[1][1].y, kB - 1);
        EXPECT_FLOAT_EQ(shape.lines[2][0].x, kL + 0.75f);
        EXPECT_FLOAT_EQ(shape.lines[2][1].x, kL + 0.75f);
        EXPECT_FLOAT_EQ(shape.lines[3][0].y, kT + 0.75f);
        EXPECT_FLOAT_EQ(shape.lines[3][1].y, kT + 0.75f);
        EXPECT_EQ(shape.curves.size(), square ? 0u : 8u);
        ExpectCornersOnTheirCircles(shape, radii, 0);
    }
}

} // namespace
