#include "widgets/Text.h"
#include "widgets/WidgetFactory.h"

#include "layouttext/AttributeMap.h"
#include "platform/Bitmap.h"
#include "platform/Graphics.h"
#include "platform/SolidBrush.h"
#include "support/ViewerFixture.h"
#include "widgets/IconFont.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <utility>

namespace {

class TextTest : public ViewerFixture {
public:
    TextTest() : ViewerFixture(WidgetFactory) {}

protected:
    void Load(Text& text, std::initializer_list<std::pair<const char16_t*, const char16_t*>> keys)
    {
        AttributeMap map;
        for (const auto& [key, value] : keys)
            map.Set(key, value);
        text.Load(map);
    }

    std::u16string Saved(Text& text)
    {
        WideString saved;
        WideString options;
        text.SaveToText(saved, options, true);
        return (saved + u"|" + options).ToU16String();
    }
};

TEST_F(TextTest, LoadAndSetReadTheirKeysEachInTheirOwnWay)
{
    Text text(&viewer);
    const std::u16string icon = GetIconFontName().ToU16String();

    Load(text, {{u"Text", u"\"a\\\\b\\r\\nc\""}, {u"Font", u"12.5,Tahoma"}, {u"Color", u"FF112233"}});
    WideString value;
    ASSERT_TRUE(text.GetAttribute(u"Text", value));
    EXPECT_EQ(value, u"a\\b\r\nc");
    EXPECT_EQ(Saved(text), u"[Text]\r\nText=a\\\\b\\r\\nc\r\nFont=12.000000,Tahoma\r\nColor=0xff112233\r\n"
                           u"Pos=,,,\r\n|");

    // Through SetAttribute the text is raw and the size a float; one item
    // brings the icon font's face back.
    EXPECT_TRUE(text.SetAttribute(u"Text", u"\"raw\""));
    EXPECT_TRUE(text.SetAttribute(u"Font", u"12.5"));
    const std::u16string saved12 = Saved(text);
    EXPECT_EQ(saved12.substr(0, 20), u"[Text]\r\nText=\"raw\"\r\n");
    if (icon.empty()) {
        EXPECT_EQ(saved12.find(u"Font="), std::u16string::npos);
    } else {
        EXPECT_NE(saved12.find(u"Font=12.500000," + icon + u"\r\n"), std::u16string::npos);
    }
    EXPECT_FALSE(text.SetAttribute(u"Font", u"12.5"));
    EXPECT_TRUE(text.SetAttribute(u"Font", u"50%,Arial"));
    EXPECT_NE(Saved(text).find(u"Font=50.000000,Arial"), std::u16string::npos);

    // Sizes of 0 or less change nothing.
    EXPECT_FALSE(text.SetAttribute(u"FontSize", u"0"));
    EXPECT_FALSE(text.SetAttribute(u"FontSize", u"-3"));
    EXPECT_TRUE(text.SetAttribute(u"FontSize", u"9.9"));
    EXPECT_NE(Saved(text).find(u"Font=9.000000,Arial"), std::u16string::npos);

    // The outline colour is decimal, so this text reads as 0; the text
    // colour is hex.
    EXPECT_TRUE(text.SetAttribute(u"OutlineColor", u"0xFF0000FF"));
    EXPECT_FALSE(text.SetAttribute(u"OutlineColor", u"0"));
    EXPECT_TRUE(text.SetAttribute(u"OutlineSize", u"2"));
    EXPECT_FALSE(text.SetAttribute(u"OutlineSize", u"-1"));
    EXPECT_TRUE(text.SetAttribute(u"Color", u"0xFF0000FF"));

    // An empty Option clears NoWrap and Bold; NoWrap is saved as an option.
    EXPECT_TRUE(text.SetAttribute(u"NoWrap", u"true"));
    ASSERT_TRUE(text.GetAttribute(u"NoWrap", value));
    EXPECT_EQ(value, u"true");
    WideString saved;
    WideString options = u"Edge";
    text.SaveToText(saved, options, true);
    EXPECT_EQ(options, u"Edge,NoWrap");
    Load(text, {{u"Option", u""}});
    text.GetAttribute(u"NoWrap", value);
    EXPECT_EQ(value, u"false");

    // With skip false nothing is written.
    saved = {};
    EXPECT_FALSE(text.SaveToText(saved, options, false));
    EXPECT_EQ(saved, u"");
}

} // namespace
