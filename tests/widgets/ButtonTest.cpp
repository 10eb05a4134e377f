#include "widgets/Button.h"
#include "widgets/WidgetFactory.h"

#include "platform/Bitmap.h"
#include "platform/MessageQueue.h"
#include "support/ViewerFixture.h"
#include "widgets/Colour.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace {

class ButtonTest : public ViewerFixture {
public:
    ButtonTest() : ViewerFixture(WidgetFactory) {}

protected:
    Button& Make(std::initializer_list<std::pair<const char16_t*, const char16_t*>> keys)
    {
        AttributeMap map = MapOf({{u"Name", u"Go"}, {u"Pos", u"L10,T10,L50,T30"}});
        for (const auto& [key, value] : keys)
            map.Set(key, value);
        viewer.AddSection(u"Button", map);
        return *dynamic_cast<Button*>(viewer.GetLastWidget());
    }

    bool Mouse(Button& button, std::uint32_t message, float x, float y)
    {
        return button.OnEvent(nullptr, message, 0, 0, {x, y});
    }
};

TEST_F(ButtonTest, AClickIsAPressAndAReleaseInsideAndDisablingLetsGoAtOnce)
{
    Button& button = Make({});
    EXPECT_EQ(button.GetLook(), Button::kNormal);

    EXPECT_TRUE(Mouse(button, platform::kMessageMouseMove, 20, 20));
    EXPECT_EQ(Codes(), (std::vector<std::uint32_t>{4, 10}));
    EXPECT_EQ(button.GetLook(), Button::kHover);
    EXPECT_FALSE(Mouse(button, platform::kMessageMouseMove, 21, 20));

    EXPECT_TRUE(Mouse(button, platform::kMessageLeftButtonDown, 20, 20));
    EXPECT_EQ(Codes(), (std::vector<std::uint32_t>{6, 4}));
    EXPECT_EQ(viewer.GetFocus(), &button);
    EXPECT_EQ(button.GetLook(), Button::kPushed);
    EXPECT_EQ(Get(button, u"Clicked"), u"true");

    // Out and back in with the button held: normal, then pushed again.
    EXPECT_TRUE(Mouse(button, platform::kMessageMouseMove, 60, 20));
    EXPECT_EQ(Codes(), (std::vector<std::uint32_t>{5, 11}));
    EXPECT_EQ(button.GetLook(), Button::kNormal);
    Mouse(button, platform::kMessageMouseMove, 49.9f, 29.9f);
    Codes();
    EXPECT_EQ(button.GetLook(), Button::kPushed);

    EXPECT_TRUE(Mouse(button, platform::kMessageLeftButtonUp, 20, 20));
    ASSERT_EQ(host.commands.size(), 2u);
    EXPECT_EQ(host.commands[0].Code, 1u);
    EXPECT_EQ(host.commands[0].Name, u"Go");
    EXPECT_EQ(Codes(), (std::vector<std::uint32_t>{1, 5}));
    EXPECT_EQ(button.GetLook(), Button::kHover);
    EXPECT_FALSE(Mouse(button, platform::kMessageLeftButtonUp, 20, 20));

    // A release outside gives no command.
    Mouse(button, platform::kMessageLeftButtonDown, 20, 20);
    Codes();
    EXPECT_TRUE(Mouse(button, platform::kMessageLeftButtonUp, 50, 20));
    EXPECT_EQ(Codes(), (std::vector<std::uint32_t>{5}));
    EXPECT_FALSE(Mouse(button, platform::kMessageLeftButtonDown, 9, 20));

    // Disabling a pushed button lets go at once.
    Mouse(button, platform::kMessageMouseMove, 20, 20);
    Mouse(button, platform::kMessageLeftButtonDown, 20, 20);
    Codes();
    EXPECT_TRUE(button.SetAttribute(u"Enable", u"false"));
    EXPECT_EQ(Codes(), (std::vector<std::uint32_t>{5}));
    EXPECT_EQ(Get(button, u"Clicked"), u"false");
    EXPECT_EQ(button.GetLook(), Button::kDisabled);
    EXPECT_FALSE(Mouse(button, platform::kMessageMouseMove, 21, 20));
    EXPECT_FALSE(button.SetAttribute(u"Enable", u"false"));
    EXPECT_TRUE(Codes().empty());
    EXPECT_TRUE(button.SetAttribute(u"Enable", u"true"));
    EXPECT_TRUE(Mouse(button, platform::kMessageMouseMove, 21, 20));
}

// One face colour per look: normal, pushed, hover, disabled; a look
// without its own takes the normal one, and a face of alpha 0 isn't
// painted. The face is painted inside the edge.
TEST_F(ButtonTest, TheFaceFollowsTheLookAndIsPaintedInsideTheEdge)
{
    Button& two = Make({{u"FaceColor", u"FFFF0000,DefaultFaceColor"}});
    EXPECT_EQ(two.FaceColorOf(Button::kPushed), ButtonFaceColour());
    EXPECT_EQ(two.FaceColorOf(Button::kHover), 0xFFFF0000u);
    EXPECT_TRUE(two.SetAttribute(u"FaceColor", u"FF0000,1,2,FF000001"));
    EXPECT_EQ(two.FaceColorOf(Button::kDisabled), 0xFF000001u);
    EXPECT_EQ(Get(two, u"FaceColor"), u"0xff0000");
    viewer.Clear();

    ResizeView(60, 40);
    viewer.AddSection(u"Brush", MapOf({{u"Pos", u"L0,T0,R0,B0"}, {u"Color", u"FFFFFFFF"}}));
    Make({{u"FaceColor", u"FFFF0000"}, {u"Option", u"Edge"}});
    Make({{u"FaceColor", u"FF0000"}, {u"Pos", u"L52,T0,L60,T8"}});
    ASSERT_TRUE(viewer.PaintAll());

    std::uint32_t pixel = 0;
    ASSERT_TRUE(viewer.GetBackingBitmap()->GetPixel(30, 20, pixel));
    EXPECT_EQ(pixel, 0xFFFF0000u);
    ASSERT_TRUE(viewer.GetBackingBitmap()->GetPixel(5, 5, pixel));
    EXPECT_EQ(pixel, 0xFFFFFFFFu);
    // A face of alpha 0 isn't painted.
    ASSERT_TRUE(viewer.GetBackingBitmap()->GetPixel(56, 4, pixel));
    EXPECT_EQ(pixel, 0xFFFFFFFFu);
}

} // namespace
