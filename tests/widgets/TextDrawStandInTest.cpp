#include "widgets/Text.h"

#include "layouttext/AttributeMap.h"
#include "platform/Font.h"
#include "platform/Graphics.h"
#include "platform/Pen.h"
#include "platform/standin/TestHooks.h"
#include "platform/SystemSettings.h"
#include "support/ViewerFixture.h"
#include "widgets/IconFont.h"
#include "widgets/WidgetFactory.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using platform::testing::DrawnText;

// What Draw asks of GDI+, as the stand-in records it.
class TextDrawStandIn : public ViewerFixture {
public:
    TextDrawStandIn() : ViewerFixture(WidgetFactory) {}

protected:
    void SetUp() override
    {
        ViewerFixture::SetUp();
        platform::testing::ResetStandIn();
        ResizeView(200, 100);
    }
    void TearDown() override
    {
        ViewerFixture::TearDown();
        platform::testing::ResetStandIn();
    }

    std::vector<DrawnText> Draw(Text& text)
    {
        platform::Graphics graphics(*viewer.GetBackingBitmap());
        platform::testing::TakeDrawnTexts();
        text.Draw(graphics, {});
        return platform::testing::TakeDrawnTexts();
    }

    Text& Make(const char16_t* font, const char16_t* option = u"")
    {
        AttributeMap map;
        map.Set(u"Pos", u"L10,T20,L110,T60");
        map.Set(u"Text", u"Hello");
        map.Set(u"Font", font);
        map.Set(u"Align", u"C,B");
        map.Set(u"Option", option);
        text = std::make_unique<Text>(&viewer);
        text->Load(map);
        return *text;
    }

    std::unique_ptr<Text> text;
};

TEST_F(TextDrawStandIn, PlainTextInPointsOrAShareOfTheHeight)
{
    Text& plain = Make(u"12,Tahoma", u"NoWrap,Bold");
    std::vector<DrawnText> drawn = Draw(plain);
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_EQ(drawn[0].kind, DrawnText::Kind::String);
    EXPECT_EQ(drawn[0].text, u"Hello");
    EXPECT_EQ(drawn[0].family, u"Tahoma");
    EXPECT_FLOAT_EQ(drawn[0].size, 12);
    EXPECT_EQ(drawn[0].style, platform::kFontStyleBold);
    EXPECT_FLOAT_EQ(drawn[0].x, 10);
    EXPECT_FLOAT_EQ(drawn[0].width, 100);
    EXPECT_EQ(drawn[0].alignment, platform::kStringAlignmentCenter);
    EXPECT_EQ(drawn[0].lineAlignment, platform::kStringAlignmentFar);
    EXPECT_EQ(drawn[0].formatFlags, platform::kStringFormatFlagsNoWrap);
    EXPECT_EQ(drawn[0].colour, 0xFF000000u);
    // The hint is the system's default while drawing and restored after.
    EXPECT_EQ(drawn[0].textRenderingHint, platform::kTextRenderingHintSystemDefault);

    // Half the height of 40 units, divided by the scale.
    viewer.Dpi = static_cast<float>(platform::GetScreenDpiX());
    viewer.Zoom = 2;
    drawn = Draw(Make(u"50%,Tahoma"));
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_FLOAT_EQ(drawn[0].size, 10);
    EXPECT_EQ(drawn[0].style, platform::kFontStyleRegular);
    EXPECT_EQ(drawn[0].formatFlags, 0);
}

TEST_F(TextDrawStandIn, WideLineSpacingShrinksPlainTextAndMissingFamiliesFallBack)
{
    platform::testing::SetFontLineSpacing(u"Meiryo UI", 2560);
    std::vector<DrawnText> drawn = Draw(Make(u"10,Meiryo UI"));
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_FLOAT_EQ(drawn[0].size, 9);

    platform::testing::SetMissingFontFamily(u"Nowhere");
    drawn = Draw(Make(u"10,Nowhere"));
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_EQ(drawn[0].family, u"Microsoft Sans Serif");
    EXPECT_FLOAT_EQ(drawn[0].size, 10);

    // Outlined text of a missing family draws nothing.
    Text& outlined = Make(u"10,Nowhere");
    outlined.SetAttribute(u"OutlineSize", u"2");
    EXPECT_TRUE(Draw(outlined).empty());
}

TEST_F(TextDrawStandIn, OutlinesArePathsStrokedThenFilled)
{
    platform::testing::SetFontLineSpacing(u"Meiryo UI", 2560);
    Text& outlined = Make(u"12,Meiryo UI");
    outlined.SetAttribute(u"OutlineSize", u"3");
    outlined.SetAttribute(u"OutlineColor", u"4278190335");
    outlined.SetAttribute(u"Color", u"FF00FF00");
    const std::vector<DrawnText> drawn = Draw(outlined);
    ASSERT_EQ(drawn.size(), 2u);
    EXPECT_EQ(drawn[0].kind, DrawnText::Kind::PathOutline);
    EXPECT_EQ(drawn[0].colour, 0xFF0000FFu);
    EXPECT_FLOAT_EQ(drawn[0].penWidth, 3);
    EXPECT_EQ(drawn[0].penLineJoin, platform::kLineJoinRound);
    EXPECT_EQ(drawn[0].smoothingMode, platform::kSmoothingModeAntiAlias);
    // Pixels at 96 per inch, without the tenth off.
    EXPECT_FLOAT_EQ(drawn[0].size, 16);
    EXPECT_EQ(drawn[1].kind, DrawnText::Kind::PathFill);
    EXPECT_EQ(drawn[1].colour, 0xFF00FF00u);

    // Back to plain mode, with the tenth off again.
    outlined.SetAttribute(u"OutlineSize", u"0");
    const std::vector<DrawnText> plain = Draw(outlined);
    ASSERT_EQ(plain.size(), 1u);
    EXPECT_FLOAT_EQ(plain[0].size, 12 * 0.9f);
    EXPECT_EQ(plain[0].smoothingMode, 0);
}

} // namespace
