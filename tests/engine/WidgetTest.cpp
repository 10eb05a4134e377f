#include "engine/Widget.h"

#include "layouttext/AttributeMap.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

namespace {

// The common part of every widget, with the geometry left out and its
// fields in sight.
class BareWidget : public Widget {
public:
    WideString ResolveRelative(int, const WideString& value) override { return value; }
    RectF GetInsetRect(float, float, float, float) override { return {}; }
    RectF GetRect() override { return {}; }
    float EvalX(const WideString&) override { return 0; }
    float EvalY(const WideString&) override { return 0; }

    // The eight position texts, edges then floors, joined by '|'.
    std::u16string Positions()
    {
        std::u16string joined;
        for (int i = 0; i < 8; ++i)
            joined += (i ? u"|" : u"") + PositionField(i).ToU16String();
        return joined;
    }
    std::u16string GroupList() const
    {
        std::u16string joined;
        for (const WideString& group : Groups)
            joined += u"[" + group.ToU16String() + u"]";
        return joined;
    }
};

AttributeMap MapOf(std::initializer_list<std::pair<const char16_t*, const char16_t*>> entries)
{
    AttributeMap map;
    for (const auto& [key, value] : entries)
        map.Set(key, value);
    return map;
}

std::u16string Get(Widget& widget, const char16_t* key)
{
    WideString value;
    if (!widget.GetAttribute(key, value))
        return u"<unknown>";
    return value.ToU16String();
}

TEST(WidgetLoad, PositionListsFillTheEdgesThenTheFloors)
{
    struct Case {
        AttributeMap map;
        std::u16string positions;
    };
    const Case cases[] = {
        {MapOf({{u"Pos", u"L0,T0"}}), u"L0|T0||||||"},
        {MapOf({{u"Pos", u"L1,T2,R3,B4,L5,T6,R7,B8,L9"}}), u"L1|T2|R3|B4|L5|T6|R7|B8"},
        {MapOf({{u"Position", u"L1,T2"}}), u"L1|T2||||||"},
        // Pos wins over Position, whatever their order.
        {MapOf({{u"Position", u"L9,T9,R9,B9"}, {u"Pos", u"L1"}}), u"L1|||||||"},
        // Items are taken as they stand: blanks stay, empty items empty.
        {MapOf({{u"Pos", u" L1,,R3 "}}), u" L1||R3 |||||"},
        {MapOf({{u"Pos", u""}}), u"|||||||"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.positions.begin(), c.positions.end()));
        BareWidget widget;
        widget.Load(c.map);
        EXPECT_EQ(widget.Positions(), c.positions);
    }
}

TEST(WidgetLoad, MissingItemsKeepEarlierValuesAndTheResultTellsOfChange)
{
    BareWidget widget;
    EXPECT_TRUE(widget.Load(MapOf({{u"Pos", u"L1,T2,R3,B4"}, {u"Name", u"Box"}, {u"Id", u"7"}})));
    EXPECT_FALSE(widget.Load(MapOf({{u"Pos", u"L1,T2,R3,B4"}, {u"Name", u"Box"}, {u"Id", u"7"}})));
    EXPECT_TRUE(widget.Load(MapOf({{u"Pos", u"L5"}})));
    EXPECT_EQ(widget.Positions(), u"L5|T2|R3|B4||||");
    EXPECT_FALSE(widget.Load(MapOf({{u"Unknown", u"x"}})));
    EXPECT_EQ(widget.GetName(), u"Box");
    EXPECT_EQ(widget.GetId(), u"7");
    // Name and Id are taken raw, not unescaped.
    widget.Load(MapOf({{u"Name", u"\"A\\nB\""}, {u"Id", u"\\t"}}));
    EXPECT_EQ(widget.GetName(), u"\"A\\nB\"");
    EXPECT_EQ(widget.GetId(), u"\\t");
}

TEST(WidgetLoad, OptionSetsAllThreeFlagsWhenPresent)
{
    BareWidget widget;
    EXPECT_TRUE(widget.Load(MapOf({{u"Option", u"Invisible,Disable"}})));
    EXPECT_FALSE(widget.IsVisible());
    EXPECT_FALSE(widget.IsEnabled());
    EXPECT_FALSE(widget.IsTabStop());

    // Without Option the flags stay.
    widget.Load(MapOf({{u"Name", u"x"}}));
    EXPECT_FALSE(widget.IsVisible());

    // TabStop alone brings the widget back, visible and enabled.
    EXPECT_TRUE(widget.Load(MapOf({{u"Option", u"TabStop"}})));
    EXPECT_TRUE(widget.IsVisible());
    EXPECT_TRUE(widget.IsEnabled());
    EXPECT_TRUE(widget.IsTabStop());

    // Items match whole and case-sensitively.
    widget.Load(MapOf({{u"Option", u"invisible, Disable,TabStops"}}));
    EXPECT_TRUE(widget.IsVisible());
    EXPECT_TRUE(widget.IsEnabled());
    EXPECT_FALSE(widget.IsTabStop());
}

TEST(WidgetLoad, GroupRefillsTheListAndDecidesWhereTheWidgetShows)
{
    BareWidget widget;
    EXPECT_TRUE(widget.IsInGroup(u"Main"));

    widget.Load(MapOf({{u"Group", u"Main,Sub"}}));
    EXPECT_EQ(widget.GroupList(), u"[Main][Sub]");
    EXPECT_TRUE(widget.IsInGroup(u"Sub"));
    EXPECT_TRUE(widget.IsInGroup(u""));
    EXPECT_FALSE(widget.IsInGroup(u"sub"));
    EXPECT_FALSE(widget.IsInGroup(u"Main,Sub"));

    // A present Group counts as a change even when it is the same.
    EXPECT_TRUE(widget.Load(MapOf({{u"Group", u"Main,Sub"}})));

    // An empty Group empties the list: the widget shows under every group.
    EXPECT_TRUE(widget.Load(MapOf({{u"Group", u""}})));
    EXPECT_EQ(widget.GroupList(), u"");
    EXPECT_TRUE(widget.IsInGroup(u"Other"));
}

TEST(WidgetAttributes, SetComparesBeforeItStoresAndOnlyTrueIsTrue)
{
    BareWidget widget;
    EXPECT_FALSE(widget.SetAttribute(u"Enable", u"true"));
    EXPECT_TRUE(widget.SetAttribute(u"Enable", u"TRUE"));
    EXPECT_EQ(Get(widget, u"Enable"), u"false");
    EXPECT_FALSE(widget.SetAttribute(u"Enable", u"no"));
    EXPECT_TRUE(widget.SetBoolAttribute(u"Enable", true));
    EXPECT_EQ(Get(widget, u"Enable"), u"true");

    EXPECT_TRUE(widget.SetBoolAttribute(u"Visible", false));
    EXPECT_FALSE(widget.SetBoolAttribute(u"Visible", false));
    EXPECT_EQ(Get(widget, u"Visible"), u"false");

    for (const char16_t* key : {u"LPos", u"TPos", u"RPos", u"BPos"}) {
        EXPECT_TRUE(widget.SetAttribute(key, u"C10"));
        EXPECT_FALSE(widget.SetAttribute(key, u"C10"));
        // Position texts can be set but not read.
        EXPECT_EQ(Get(widget, key), u"<unknown>");
    }
    EXPECT_EQ(widget.Positions(), u"C10|C10|C10|C10||||");

    // Load-only keys and unknown ones do nothing here; keys are exact.
    for (const char16_t* key : {u"Pos", u"Group", u"Option", u"Name", u"Id", u"enable", u"Width"})
        EXPECT_FALSE(widget.SetAttribute(key, u"x"));
    EXPECT_EQ(widget.GetName(), u"");
    EXPECT_EQ(Get(widget, u"Name"), u"<unknown>");
}

TEST(WidgetSaveToText, WritesEdgesNameAndNegativeFlags)
{
    BareWidget widget;
    widget.Load(MapOf({{u"Pos", u"L1,T2,R3,B4,L5"}, {u"Id", u"9"}, {u"Group", u"G"}}));
    WideString text = u"Before\r\n";
    WideString options;
    EXPECT_TRUE(widget.SaveToText(text, options, false));
    EXPECT_EQ(text, u"Before\r\nPos=L1,T2,R3,B4\r\n");
    EXPECT_EQ(options, u"");

    widget.Load(MapOf({{u"Name", u"Box"}, {u"Option", u"Disable,Invisible"}}));
    text = {};
    options = u"TabStop";
    EXPECT_TRUE(widget.SaveToText(text, options, false));
    EXPECT_EQ(text, u"Pos=L1,T2,R3,B4\r\nName=Box\r\n");
    EXPECT_EQ(options, u"TabStop,Disable,Invisible");

    text = {};
    options = {};
    widget.SetBoolAttribute(u"Enable", true);
    widget.SaveToText(text, options, false);
    EXPECT_EQ(options, u"Invisible");

    EXPECT_FALSE(widget.SaveToText(text, options, true));
    EXPECT_EQ(options, u"Invisible");
}

TEST(WidgetOperations, IdFallsBackToTheAddressAndBoundsBecomeTexts)
{
    BareWidget first;
    BareWidget second;
    // Without an Id each widget has one of its own, the same each time.
    const WideString firstId = first.GetId();
    EXPECT_FALSE(firstId.IsEmpty());
    EXPECT_FALSE(firstId == second.GetId());
    EXPECT_EQ(first.GetId(), firstId);

    EXPECT_TRUE(first.SetBounds({10.5f, -2, 100, 0.25f}));
    EXPECT_EQ(first.Positions(), u"L10.5|T-2|L110.5|T-1.75||||");
    first.SetBounds({0, 0, 1e7f, 3});
    EXPECT_EQ(first.Positions(), u"L0|T0|L1e+07|T3||||");
}

} // namespace
