#include "widgets/Text.h"

#include "platform/Font.h"
#include "platform/Graphics.h"
#include "platform/SystemSettings.h"
#include "platform/standin/TestHooks.h"
#include "support/StandInViewerFixture.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using platform::testing::DrawnText;

// Text on the stand-in, which records what Draw asks of GDI+: the keys of
// a section and those of SetAttribute, each read in its own way, show in
// what is drawn.
class TextTest : public StandInViewerFixture {
protected:
    // A text "Hello" at 10,20, 100 by 40 units, centred at the bottom.
    void Make(const char16_t* font, const char16_t* option = u"")
    {
        text = std::make_unique<Text>(&viewer);
        text->Load(MapOf({{u"Pos", u"L10,T20,L110,T60"}, {u"Text", u"Hello"}, {u"Font", font}, {u"Align", u"C,B"},
                          {u"Option", option}}));
    }
    std::vector<DrawnText> Draw()
    {
        platform::Graphics graphics(*viewer.GetBackingBitmap());
        platform::testing::TakeDrawnTexts();
        text->Draw(graphics, {});
        return platform::testing::TakeDrawnTexts();
    }
    // The one string drawn.
    DrawnText DrawOne()
    {
        const std::vector<DrawnText> drawn = Draw();
        EXPECT_EQ(drawn.size(), 1u);
        return drawn.empty() ? DrawnText{} : drawn[0];
    }

    std::unique_ptr<Text> text;
};

// Plain text in points or a share of the height; a face of wide line
// spacing shrinks it, and a missing family falls back to the generic one.
TEST_F(TextTest, PlainTextInPointsOrAShareOfTheHeight)
{
    Make(u"12,Tahoma", u"NoWrap,Bold");
    DrawnText drawn = DrawOne();
    EXPECT_EQ(drawn.kind, DrawnText::Kind::String);
    EXPECT_EQ(drawn.text, u"Hello");
    EXPECT_EQ(drawn.family, u"Tahoma");
    EXPECT_FLOAT_EQ(drawn.size, 12);
    EXPECT_EQ(drawn.style, platform::kFontStyleBold);
    EXPECT_FLOAT_EQ(drawn.x, 10);
    EXPECT_FLOAT_EQ(drawn.width, 100);
    EXPECT_EQ(drawn.alignment, platform::kStringAlignmentCenter);
    EXPECT_EQ(drawn.lineAlignment, platform::kStringAlignmentFar);
    EXPECT_EQ(drawn.formatFlags, platform::kStringFormatFlagsNoWrap);
    EXPECT_EQ(drawn.colour, 0xFF000000u);
    // The hint is the system's default while drawing and restored after.
    EXPECT_EQ(drawn.textRenderingHint, platform::kTextRenderingHintSystemDefault);

    // Half the height of 40 units, divided by the scale.
    viewer.Dpi = static_cast<float>(platform::GetScreenDpiX());
    viewer.Zoom = 2;
    Make(u"50%,Tahoma");
    drawn = DrawOne();
    EXPECT_FLOAT_EQ(drawn.size, 10);
    EXPECT_EQ(drawn.style, platform::kFontStyleRegular);
    EXPECT_EQ(drawn.formatFlags, 0);

    viewer.Dpi = 0;
    viewer.Zoom = 1;
    platform::testing::SetFontLineSpacing(u"Meiryo UI", 2560);
    Make(u"10,Meiryo UI");
    EXPECT_FLOAT_EQ(DrawOne().size, 9);
    platform::testing::SetMissingFontFamily(u"Nowhere");
    Make(u"10,Nowhere");
    drawn = DrawOne();
    EXPECT_EQ(drawn.family, u"Microsoft Sans Serif");
    EXPECT_FLOAT_EQ(drawn.size, 10);
}

TEST_F(TextTest, LoadAndSetReadTheirKeysEachInTheirOwnWay)
{
    // A section's text is unescaped, its size a whole number of points.
    Make(u"12.5,Tahoma");
    text->Load(MapOf({{u"Text", u"\"a\\\\b\\r\\nc\""}, {u"Color", u"FF112233"}}));
    DrawnText drawn = DrawOne();
    EXPECT_EQ(drawn.text, u"a\\b\r\nc");
    EXPECT_FLOAT_EQ(drawn.size, 12);
    EXPECT_EQ(drawn.colour, 0xFF112233u);

    // Through SetAttribute the text is raw and the size a float; one item
    // brings the icon font's face back, which the stand-in has none of, so
    // the generic family stands in. "50%" is 50 points here.
    EXPECT_TRUE(text->SetAttribute(u"Text", u"\"raw\""));
    EXPECT_TRUE(text->SetAttribute(u"Font", u"12.5"));
    EXPECT_FALSE(text->SetAttribute(u"Font", u"12.5"));
    drawn = DrawOne();
    EXPECT_EQ(drawn.text, u"\"raw\"");
    EXPECT_FLOAT_EQ(drawn.size, 12.5f);
    EXPECT_EQ(drawn.family, u"Microsoft Sans Serif");
    EXPECT_TRUE(text->SetAttribute(u"Font", u"50%,Arial"));
    EXPECT_FLOAT_EQ(DrawOne().size, 50);

    // Sizes of 0 or less change nothing; others are whole numbers.
    EXPECT_FALSE(text->SetAttribute(u"FontSize", u"0"));
    EXPECT_FALSE(text->SetAttribute(u"FontSize", u"-3"));
    EXPECT_TRUE(text->SetAttribute(u"FontSize", u"9.9"));
    EXPECT_TRUE(text->SetAttribute(u"Color", u"0xFF0000FF"));
    drawn = DrawOne();
    EXPECT_EQ(drawn.family, u"Arial");
    EXPECT_FLOAT_EQ(drawn.size, 9);
    EXPECT_EQ(drawn.colour, 0xFF0000FFu);

    // An empty Option clears NoWrap and Bold.
    EXPECT_TRUE(text->SetAttribute(u"NoWrap", u"true"));
    EXPECT_EQ(Get(*text, u"NoWrap"), u"true");
    text->Load(MapOf({{u"Option", u""}}));
    EXPECT_EQ(Get(*text, u"NoWrap"), u"false");
}

} // namespace
