#include "engine/Widget.h"

#include "support/ViewerFixture.h"

#include <gtest/gtest.h>

#include <string>

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

    // The eight position texts (edges, then floors) joined by '|', the name,
    // the id, the flags visible, enabled and tab stop as "vet" with a '-'
    // for each one that is off, and the groups.
    std::u16string State()
    {
        std::u16string text;
        for (int i = 0; i < 8; ++i)
            text += (i ? u"|" : u"") + PositionField(i).ToU16String();
        text += u" " + Name.ToU16String() + u" " + Id.ToU16String() + u" ";
        text += {Visible ? u'v' : u'-', Enabled ? u'e' : u'-', TabStop ? u't' : u'-'};
        for (const WideString& group : Groups)
            text += u" [" + group.ToU16String() + u"]";
        return text;
    }
};

// Sections loaded one after the other into one widget: what a section
// lacks keeps its earlier value, and Load tells whether anything changed.
TEST(WidgetLoad, EachSectionChangesOnlyWhatItHolds)
{
    struct Step {
        AttributeMap map;
        bool changed;
        std::u16string state;
    };
    const Step steps[] = {
        {MapOf({{u"Pos", u"L0,T0"}}), true, u"L0|T0||||||   ve-"},
        {MapOf({{u"Pos", u"L1,T2,R3,B4,L5,T6,R7,B8,L9"}, {u"Name", u"Box"}, {u"Id", u"7"}}), true,
         u"L1|T2|R3|B4|L5|T6|R7|B8 Box 7 ve-"},
        {MapOf({{u"Pos", u"L1,T2"}, {u"Name", u"Box"}, {u"Id", u"7"}, {u"Unknown", u"x"}}), false,
         u"L1|T2|R3|B4|L5|T6|R7|B8 Box 7 ve-"},
        // Pos wins over Position, whatever their order; items are taken as
        // they stand, blanks and empty items too. An empty list has no item.
        {MapOf({{u"Position", u"L9,T9,R9,B9"}, {u"Pos", u" L1,,R3 "}}), true, u" L1||R3 |B4|L5|T6|R7|B8 Box 7 ve-"},
        {MapOf({{u"Position", u"L2"}}), true, u"L2||R3 |B4|L5|T6|R7|B8 Box 7 ve-"},
        {MapOf({{u"Pos", u""}}), false, u"L2||R3 |B4|L5|T6|R7|B8 Box 7 ve-"},
        // Name and Id are raw, not unescaped.
        {MapOf({{u"Name", u"\"A\\nB\""}, {u"Id", u"\\t"}}), true, u"L2||R3 |B4|L5|T6|R7|B8 \"A\\nB\" \\t ve-"},
        // Option sets all three flags when present, matching whole items
        // case-sensitively; without Option the flags stay.
        {MapOf({{u"Pos", u"L0,T0,R0,B0,,,,"}, {u"Name", u"N"}, {u"Id", u""}, {u"Option", u"Invisible,Disable"}}),
         true, u"L0|T0|R0|B0|||| N  ---"},
        {MapOf({{u"Name", u"x"}}), true, u"L0|T0|R0|B0|||| x  ---"},
        {MapOf({{u"Option", u"TabStop"}}), true, u"L0|T0|R0|B0|||| x  vet"},
        {MapOf({{u"Option", u"invisible, Disable,TabStops"}}), true, u"L0|T0|R0|B0|||| x  ve-"},
        // A present Group refills the list and counts as a change, even
        // when it is the same.
        {MapOf({{u"Group", u"Main,Sub"}}), true, u"L0|T0|R0|B0|||| x  ve- [Main] [Sub]"},
        {MapOf({{u"Group", u"Main,Sub"}}), true, u"L0|T0|R0|B0|||| x  ve- [Main] [Sub]"},
    };
    BareWidget widget;
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(widget.Load(steps[i].map), steps[i].changed);
        EXPECT_EQ(widget.State(), steps[i].state);
    }

    // The groups decide where the widget shows: by whole name, and an empty
    // list or group shows it everywhere.
    EXPECT_TRUE(widget.IsInGroup(u"Sub"));
    EXPECT_TRUE(widget.IsInGroup(u""));
    EXPECT_FALSE(widget.IsInGroup(u"sub"));
    EXPECT_FALSE(widget.IsInGroup(u"Main,Sub"));
    EXPECT_TRUE(widget.Load(MapOf({{u"Group", u""}})));
    EXPECT_TRUE(widget.IsInGroup(u"Other"));
}

TEST(WidgetAttributes, SetComparesBeforeItStoresOnlyTrueIsTrueAndIdsFallBackToTheAddress)
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
    EXPECT_EQ(widget.State(), u"C10|C10|C10|C10||||   -e-");

    // Load-only keys and unknown ones do nothing here; keys are exact.
    for (const char16_t* key : {u"Pos", u"Group", u"Option", u"Name", u"Id", u"enable", u"Width"})
        EXPECT_FALSE(widget.SetAttribute(key, u"x"));
    EXPECT_EQ(Get(widget, u"Name"), u"<unknown>");

    // Without an Id each widget has one of its own, the same each time.
    BareWidget first;
    BareWidget second;
    const WideString firstId = first.GetId();
    EXPECT_FALSE(firstId.IsEmpty());
    EXPECT_FALSE(firstId == second.GetId());
    EXPECT_EQ(first.GetId(), firstId);

    EXPECT_TRUE(first.SetBounds({10.5f, -2, 100, 0.25f}));
    EXPECT_EQ(first.State(), u"L10.5|T-2|L110.5|T-1.75||||   ve-");
    first.SetBounds({0, 0, 1e7f, 3});
    EXPECT_EQ(first.State(), u"L0|T0|L1e+07|T3||||   ve-");
}

} // namespace
