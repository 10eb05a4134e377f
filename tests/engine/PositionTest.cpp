#include "engine/PositionedWidget.h"

#include "platform/SystemSettings.h"
#include "support/ViewerFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace {

// Loads a widget from one section's keys and puts it on top of the view.
PositionedWidget& AddWidget(Viewer& viewer, const AttributeMap& map)
{
    auto widget = std::make_unique<PositionedWidget>(&viewer);
    PositionedWidget& added = *widget;
    widget->Load(map);
    viewer.AppendWidget(std::move(widget));
    return added;
}

using Position = ViewerFixture;

TEST_F(Position, TextsEvaluateOnBothAxes)
{
    // Without a bitmap the view has no extent, and the empty widget before
    // the first one has every edge at 0.
    PositionedWidget widget(&viewer);
    EXPECT_FLOAT_EQ(widget.EvalX(u"R10"), -10);
    EXPECT_FLOAT_EQ(widget.EvalY(u"B50%"), 0);
    ASSERT_NE(viewer.GetLastWidget(), nullptr);
    EXPECT_EQ(Describe(viewer.GetLastWidget()->GetRect()), "0,0,0,0");

    ResizeView(301, 201);
    struct Case {
        const char16_t* text;
        float x;
        float y;
    };
    const Case cases[] = {
        // The first character is the prefix, whatever it is.
        {u"10", 0, 0}, {u"120", 20, 20}, {u"0", 0, 0}, {u"", 0, 0}, {u"L", 0, 0},
        {u"x50%", 50, 50}, {u"L%", 0, 0}, {u"Labc", 0, 0}, {u"L1e2", 100, 100}, {u"L-3.5", -3.5f, -3.5f},
        {u"L50%", 150, 50}, {u"T50%", 50, 100}, {u"R8", 293, 8}, {u"B8", 8, 193},
        {u"R10%", 270, 10}, {u"B10%", 10, 180}, {u"C-40", 110.5f, 60.5f}, {u"C10%", 180, 120},
        {u"l5", 5, 5}, {u"t5", 5, 5}, {u"l50%", 0, 50}, {u"t50%", 50, 0},
        {u"r10", 291, 10}, {u"b10", 10, 191}, {u"r10%", 270, 10}, {u"b10%", 10, 180},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.text, c.text + std::char_traits<char16_t>::length(c.text)));
        EXPECT_FLOAT_EQ(widget.EvalX(c.text), c.x);
        EXPECT_FLOAT_EQ(widget.EvalY(c.text), c.y);
    }

    // The origins move l, r, t and b, and nothing else.
    viewer.LogicalOriginX = 10;
    viewer.DeviceOriginX = 20;
    viewer.LogicalOriginY = -4;
    EXPECT_FLOAT_EQ(widget.EvalX(u"l5"), 15);
    EXPECT_FLOAT_EQ(widget.EvalX(u"l50%"), 5);
    EXPECT_FLOAT_EQ(widget.EvalX(u"r1"), 310);
    EXPECT_FLOAT_EQ(widget.EvalX(u"L5"), 5);
    EXPECT_FLOAT_EQ(widget.EvalY(u"t5"), 1);
    EXPECT_FLOAT_EQ(widget.EvalY(u"b1"), 196);

    // A fixed view size stands in for the bitmap's, but not for r and b.
    viewer.ViewWidth = 100;
    EXPECT_FLOAT_EQ(widget.EvalX(u"R10"), 90);
    EXPECT_FLOAT_EQ(widget.EvalX(u"r1"), 310);
}

TEST_F(Position, TheScaleFollowsTheLayoutsResolution)
{
    // Elsewhere than on its own screen a layout grows with the ratio of the
    // resolutions; without a resolution it is drawn one unit to the pixel.
    EXPECT_FLOAT_EQ(ScaleForResolution(120, 96, 2), 2.5f);
    EXPECT_FLOAT_EQ(ScaleForResolution(96, 96, 2), 2);
    EXPECT_FLOAT_EQ(ScaleForResolution(120, 0, 2), 1);
    EXPECT_FLOAT_EQ(ScaleForResolution(120, -1, 2), 1);

    // On its own screen a layout is drawn at its zoom.
    ResizeView(500, 100);
    viewer.Dpi = static_cast<float>(platform::GetScreenDpiX());
    viewer.Zoom = 1.25f;
    EXPECT_FLOAT_EQ(viewer.GetScale(), 1.25f);
    PositionedWidget widget(&viewer);
    EXPECT_FLOAT_EQ(widget.EvalX(u"R10"), 390);
    EXPECT_FLOAT_EQ(widget.EvalX(u"L50%"), 200);
    EXPECT_FLOAT_EQ(viewer.DeviceFromLogicalX(100), 125);
    EXPECT_FLOAT_EQ(viewer.LogicalFromDeviceX(125), 100);

    viewer.Zoom = 0;
    EXPECT_FLOAT_EQ(viewer.LogicalFromDeviceX(125), 0);
}

TEST_F(Position, EdgesWithFloorsWidthsAndHeights)
{
    ResizeView(301, 201);
    PositionedWidget& floored = AddWidget(viewer, MapOf({{u"Pos", u"L10,T10,R10,B10,,,L200"}}));
    EXPECT_EQ(Describe(floored.GetRect()), Describe({10, 10, 281, 181}));
    ResizeView(150, 100);
    EXPECT_EQ(Describe(floored.GetRect()), Describe({10, 10, 190, 80}));
    ResizeView(301, 201);

    // A box of 100 by 20 units that keeps 120 from the right edge.
    PositionedWidget& box = AddWidget(viewer, MapOf({{u"Pos", u"R120,B40,W100,H20"}}));
    EXPECT_EQ(Describe(box.GetRect()), Describe({181, 161, 100, 20}));
    WideString width;
    EXPECT_TRUE(box.GetAttribute(u"Width", width));
    EXPECT_EQ(width, u"100");
    EXPECT_TRUE(box.GetAttribute(u"Enable", width));
    EXPECT_EQ(Describe(box.GetInsetRect(1, 2, -3, -4)), Describe({182, 163, 96, 14}));

    // A left or top edge can't be a width or height, nor have one as a floor.
    PositionedWidget& widths = AddWidget(viewer, MapOf({{u"Pos", u"W10,H10,W5,H5"}}));
    EXPECT_EQ(Describe(widths.GetRect()), Describe({0, 0, 5, 5}));
    PositionedWidget& floors = AddWidget(viewer, MapOf({{u"Pos", u"L10,T10,L20,T20,W1,H1"}}));
    EXPECT_EQ(Describe(floors.GetRect()), Describe({0, 0, 20, 20}));

    // Inverted rectangles are legal. Edges on the left and top hit.
    PositionedWidget& inverted = AddWidget(viewer, MapOf({{u"Pos", u"L50,T50,L40,T60"}}));
    EXPECT_EQ(Describe(inverted.GetRect()), Describe({50, 50, -10, 10}));
    EXPECT_FALSE(inverted.HitTest({45, 55}));
    EXPECT_TRUE(box.HitTest({181, 161}));
    EXPECT_FALSE(box.HitTest({281, 170}));
    EXPECT_FALSE(box.HitTest({200, 181}));
    EXPECT_TRUE(box.HitTest({280.9f, 180.9f}));
}

std::u16string SavedPos(PositionedWidget& widget)
{
    WideString text;
    WideString options;
    widget.SaveToText(text, options, false);
    return text.ToU16String();
}

TEST_F(Position, RelativePositionsFollowTheWidgetBefore)
{
    // The first widget has nothing before it: its items stand as they are.
    PositionedWidget& first = AddWidget(viewer, MapOf({{u"RelPos", u"L8,T8,R8,B8"}}));
    EXPECT_EQ(SavedPos(first), u"Pos=L8,T8,R8,B8\r\n");

    ResizeView(300, 200);
    AddWidget(viewer, MapOf({{u"Pos", u"L10,T20,R10,B44"}}));
    PositionedWidget& next = AddWidget(viewer, MapOf({{u"RelPos", u"L8,0,W80,H24"}}));
    EXPECT_EQ(SavedPos(next), u"Pos=L298.000000,T20,W80,H24\r\n");
    EXPECT_EQ(Describe(next.GetRect()), Describe({298, 20, 80, 24}));

    // R goes left of the left edge, T below the bottom, and B adds to the top.
    PositionedWidget& around = AddWidget(viewer, MapOf({{u"RelPos", u"R2.5,T1,R1%,B3"}}));
    EXPECT_EQ(SavedPos(around), u"Pos=L295.500000,T45.000000,L297.000000,T23.000000\r\n");

    // "0" takes over the texts of the widget before, never its floors, and
    // stays live; the numbers were worked out at load time and stay put.
    PositionedWidget& anchor = AddWidget(viewer, MapOf({{u"Pos", u"L10,T20,R10,B44,L5,T5,L250,T5"}}));
    PositionedWidget& copy = AddWidget(viewer, MapOf({{u"RelPos", u"0,0,0,0,0,0,0,0"}}));
    EXPECT_EQ(SavedPos(copy), u"Pos=L10,T20,R10,B44\r\n");
    PositionedWidget& follower = AddWidget(viewer, MapOf({{u"RelPos", u"L0,T0,0"}}));
    ResizeView(200, 100);
    EXPECT_FLOAT_EQ(anchor.Right(), 250);
    EXPECT_FLOAT_EQ(copy.Right(), 190);
    EXPECT_FLOAT_EQ(copy.Left(), 10);
    EXPECT_FLOAT_EQ(follower.Left(), 290);
    EXPECT_FLOAT_EQ(follower.Right(), 190);

    // Pos overwrites RelPos item by item, an empty item too, whatever their
    // order in the section.
    PositionedWidget& mixed = AddWidget(viewer, MapOf({{u"Pos", u",T1"}, {u"RelPos", u"L1,T1,0"}}));
    EXPECT_EQ(SavedPos(mixed), u"Pos=,T1,R10,\r\n");
}

} // namespace
