#include "engine/ToolTipWindow.h"
#include "widgets/WidgetFactory.h"

#include "engine/PositionedWidget.h"
#include "layouttext/AttributeMap.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "support/StandInViewerFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Three buttons side by side on a shown window: A and B with a tip, C
// without.
class ToolTipTest : public StandInViewerFixture {
public:
    ToolTipTest() : StandInViewerFixture(WidgetFactory) {}

protected:
    void SetUp() override
    {
        StandInViewerFixture::SetUp();
        ResizeView(200, 100);
        AddButton(u"A", u"L10,T10,L50,T30", u"Open a file");
        AddButton(u"B", u"L60,T10,L100,T30", u"Check it");
        AddButton(u"C", u"L110,T10,L150,T30", nullptr);
        client = platform::GetClientBounds(host.window);
        platform::testing::TakeCallLog();
    }
    void TearDown() override
    {
        ToolTipWindow::Instance().Destroy();
        StandInViewerFixture::TearDown();
    }

    void AddButton(const char16_t* name, const char16_t* position, const char16_t* tip)
    {
        AttributeMap map = MapOf({{u"Name", name}, {u"Pos", position}});
        if (tip != nullptr)
            map.Set(u"ToolTip", tip);
        viewer.AddSection(u"Button", map);
        buttons.push_back(dynamic_cast<PositionedWidget*>(viewer.GetLastWidget()));
    }
    void MoveTo(Viewer& on, platform::WindowHandle window, int x, int y)
    {
        on.OnMessage(window, platform::kMessageMouseMove, 0, (y << 16) | x);
    }
    void MoveTo(int x, int y) { MoveTo(viewer, host.window, x, y); }
    // What was done to the tip since the last call.
    std::vector<std::string> TipCalls()
    {
        std::vector<std::string> calls;
        for (std::string& call : platform::testing::TakeCallLog())
            if (call.rfind("ToolTip", 0) == 0)
                calls.push_back(call);
        return calls;
    }
    // The tip 8 pixels below the lower left corner at x, y of the view.
    std::string Below(int x, int y)
    {
        return "ToolTipPosition " + std::to_string(client.left + x) + " " + std::to_string(client.top + y + 8);
    }

    PixelRect client;
    std::vector<PositionedWidget*> buttons;
};

using Calls = std::vector<std::string>;

// Each mouse move goes to the buttons from the last made to the first and
// stops at the first whose hover changed, so a button hears that the mouse
// left it one move later than the next one hears that it came.
TEST_F(ToolTipTest, TheTipFollowsTheMouseFromButtonToButton)
{
    MoveTo(20, 20);
    EXPECT_EQ(TipCalls(), (Calls{"ToolTipCreate", "ToolTipAddTool 176", Below(10, 30), "ToolTipText Open a file",
                                 "ToolTipTrack on"}));
    MoveTo(25, 22);
    EXPECT_EQ(TipCalls(), Calls{});

    // Straight from A to B: B takes the tip over, and A's leaving after
    // that finds it isn't A's any more.
    MoveTo(70, 20);
    EXPECT_EQ(TipCalls(), (Calls{Below(60, 30), "ToolTipText Check it", "ToolTipTrack on"}));
    MoveTo(72, 20);
    EXPECT_EQ(TipCalls(), Calls{});

    // Back to A: B takes its tip down before A shows its own.
    MoveTo(20, 20);
    EXPECT_EQ(TipCalls(), Calls{"ToolTipTrack off"});
    MoveTo(21, 20);
    EXPECT_EQ(TipCalls(), (Calls{Below(10, 30), "ToolTipText Open a file", "ToolTipTrack on"}));

    // A button without a tip shows none and leaves A's to A.
    MoveTo(120, 20);
    EXPECT_EQ(TipCalls(), Calls{});
    MoveTo(121, 20);
    EXPECT_EQ(TipCalls(), Calls{"ToolTipTrack off"});
    MoveTo(150, 80);
    EXPECT_EQ(TipCalls(), Calls{});

    // The window outlives its tip. Disabling the button under the mouse
    // takes the tip down, since no leaving will come to it.
    MoveTo(70, 20);
    EXPECT_EQ(TipCalls(), (Calls{Below(60, 30), "ToolTipText Check it", "ToolTipTrack on"}));
    viewer.SetWidgetBool(u"B", u"Enable", false);
    EXPECT_EQ(TipCalls(), Calls{"ToolTipTrack off"});
}

TEST_F(ToolTipTest, OnlyTheOwnerTakesTheTipDownAndAnotherHostStartsAfresh)
{
    ToolTipWindow& tip = ToolTipWindow::Instance();
    EXPECT_FALSE(tip.Show(viewer, u"text", nullptr));
    ASSERT_TRUE(tip.Show(viewer, u"text", buttons[0]));
    TipCalls();
    EXPECT_TRUE(tip.Show(viewer, u"text", buttons[0]));
    EXPECT_TRUE(tip.Show(viewer, u"", buttons[1]));
    EXPECT_EQ(TipCalls(), Calls{});

    // A mouse message in another host's view takes the tip down, and the
    // next one is made anew, with its text, even the same.
    RecordingHost otherHost;
    otherHost.window = platform::CreateDialogWindow(nullptr, 129, NeverHandles);
    platform::ShowWindowAs(otherHost.window, platform::kShowNormal);
    Viewer other(&otherHost, WidgetFactory);
    {
        platform::WindowContextScope screen(nullptr);
        ASSERT_TRUE(other.Resize(screen.Context(), 50, 50));
    }
    MoveTo(other, otherHost.window, 5, 5);
    EXPECT_EQ(TipCalls(), (Calls{"ToolTipDeleteTool", "ToolTipDestroy"}));
    EXPECT_TRUE(tip.Show(viewer, u"text", buttons[0]));
    EXPECT_EQ(TipCalls(), (Calls{"ToolTipCreate", "ToolTipAddTool 176", Below(10, 30), "ToolTipText text",
                                 "ToolTipTrack on"}));
    other.Resize(nullptr, -1, -1);
}

} // namespace
