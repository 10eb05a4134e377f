#include "engine/CaptureGuard.h"
#include "engine/InputWidget.h"

#include "layouttext/AttributeMap.h"
#include "platform/Input.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "platform/Window.h"
#include "support/StandInViewerFixture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

std::intptr_t PointParam(int x, int y)
{
    return static_cast<std::intptr_t>((static_cast<std::uint32_t>(y & 0xFFFF) << 16) | (x & 0xFFFF));
}

// An input widget that writes down what it is offered and takes what falls
// on its rectangle. Like a text field it knows "EditVisible": entering
// makes it the focus, leaving gives the focus up.
class Catcher : public InputWidget {
public:
    Catcher(Viewer* owner, std::vector<std::string>& log, const char16_t* name, const char16_t* pos,
            const char16_t* option = u"")
        : InputWidget(owner), log(log)
    {
        AttributeMap map;
        map.Set(u"Name", name);
        map.Set(u"Pos", pos);
        map.Set(u"Option", option);
        Load(map);
    }

    bool OnEvent(platform::WindowHandle, std::uint32_t message, std::uintptr_t, std::intptr_t,
                 const PointF& point) override
    {
        char text[64];
        std::snprintf(text, sizeof text, " %x %g,%g", message, point.x, point.y);
        log.push_back(Label() + text);
        return HitTest(point);
    }

    bool SetAttribute(const WideString& key, const WideString& value) override
    {
        if (key == u"EditVisible") {
            log.push_back(Label() + (value == u"true" ? " enter" : " leave"));
            Notify(value == u"true" ? EventCode::kTakeFocus : EventCode::kGiveUpFocus);
            return true;
        }
        return InputWidget::SetAttribute(key, value);
    }

    std::string Label() const
    {
        const std::u16string name = GetName().ToU16String();
        return std::string(name.begin(), name.end());
    }

private:
    std::vector<std::string>& log;
};

class Input : public StandInViewerFixture {
protected:
    Catcher& Add(const char16_t* name, const char16_t* pos, const char16_t* option = u"")
    {
        auto widget = std::make_unique<Catcher>(&viewer, log, name, pos, option);
        Catcher& added = *widget;
        viewer.AppendWidget(std::move(widget));
        return added;
    }

    bool Send(std::uint32_t message, std::intptr_t lParam = 0, std::uintptr_t wParam = 0)
    {
        return viewer.OnMessage(host.window, message, wParam, lParam);
    }

    std::vector<std::string> TakeLog() { return std::exchange(log, {}); }

    std::vector<std::string> log;
};

WidgetEvent EventFor(const Widget& widget, std::uint32_t code)
{
    return {widget.GetName(), widget.GetId(), code, {}};
}

TEST_F(Input, MessagesGoToTheFocusThenFromTheTopDown)
{
    Catcher& low = Add(u"low", u"L0,T0,L50,T50");
    Add(u"high", u"L25,T0,L75,T50");
    Add(u"off", u"L0,T0,L100,T50", u"Disable");
    Add(u"hidden", u"L0,T0,L100,T50", u"Invisible");

    // The later of two overlapping widgets takes the message; a declined
    // one passes down. Disabled and invisible widgets see nothing.
    EXPECT_TRUE(Send(platform::kMessageMouseMove, PointParam(30, 10)));
    EXPECT_EQ(TakeLog(), std::vector<std::string>{"high 200 30,10"});
    EXPECT_TRUE(Send(platform::kMessageMouseMove, PointParam(10, 10)));
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"high 200 10,10", "low 200 10,10"}));
    EXPECT_FALSE(Send(platform::kMessageMouseMove, PointParam(-2, -3)));
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"high 200 -2,-3", "low 200 -2,-3"}));

    // The focus sees a move first, and a second time in the walk when it
    // declines it.
    EXPECT_TRUE(viewer.PostEvent(EventFor(low, EventCode::kTakeFocus)));
    EXPECT_EQ(viewer.GetFocus(), &low);
    EXPECT_TRUE(Send(platform::kMessageMouseMove, PointParam(30, 10)));
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"low 200 30,10"}));
    EXPECT_FALSE(Send(platform::kMessageMouseMove, PointParam(80, 10)));
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"low 200 80,10", "high 200 80,10", "low 200 80,10"}));

    // A press outside the view goes to the focus alone and isn't taken.
    EXPECT_FALSE(Send(platform::kMessageLeftButtonDown, PointParam(100, 10)));
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"low 201 100,10"}));
    // Other messages aren't offered to the focus first.
    const platform::PixelRect client = platform::GetClientBounds(host.window);
    platform::testing::SetCursorScreenPosition(client.left, client.top);
    EXPECT_TRUE(Send(platform::kMessageTimer));
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"high 113 0,0", "low 113 0,0"}));

    // A hidden window or an unusable scale takes nothing.
    viewer.Dpi = 96;
    viewer.Zoom = 0;
    EXPECT_FALSE(Send(platform::kMessageMouseMove, PointParam(30, 10)));
    viewer.Zoom = 1;
    viewer.Dpi = 0;
    platform::ShowWindowAs(host.window, platform::kShowHide);
    EXPECT_FALSE(Send(platform::kMessageMouseMove, PointParam(30, 10)));
    EXPECT_TRUE(TakeLog().empty());
}

TEST_F(Input, TheCursorComesFromTheMessageOrFromTheScreen)
{
    Add(u"all", u"L-1000,T-1000,L1000,T1000");
    const platform::PixelRect client = platform::GetClientBounds(host.window);
    platform::testing::SetCursorScreenPosition(client.left + 7, client.top + 9);

    // A right release and the wheel ask where the cursor is.
    for (std::uint32_t message : {platform::kMessageRightButtonUp, platform::kMessageMouseWheel}) {
        EXPECT_TRUE(Send(message, PointParam(1, 1)));
        EXPECT_EQ(TakeLog().front().substr(8), "7,9");
    }
    // Points in lParam are signed, and the scale and origin map them.
    viewer.Dpi = 96;
    viewer.Zoom = 2;
    viewer.LogicalOriginX = 10;
    EXPECT_TRUE(Send(platform::kMessageLeftButtonUp, PointParam(-20, 30)));
    EXPECT_EQ(TakeLog(), std::vector<std::string>{"all 202 0,15"});
    // Presses activate the window; releases and the wheel don't.
    platform::testing::TakeCallLog();
    Send(platform::kMessageRightButtonDown);
    Send(platform::kMessageMiddleButtonDoubleClick);
    Send(platform::kMessageLeftButtonUp);
    Send(platform::kMessageMouseWheel);
    EXPECT_EQ(platform::testing::TakeCallLog(), (std::vector<std::string>{"ActivateWindow", "ActivateWindow"}));
}

TEST_F(Input, TabWalksTheStopsAndWrapsAround)
{
    EXPECT_FALSE(Send(platform::kMessageKeyDown, 0, platform::kKeyTab));
    Catcher& first = Add(u"first", u"L0,T0,L1,T1", u"TabStop");
    Add(u"plain", u"L0,T0,L1,T1");
    Add(u"hidden", u"L0,T0,L1,T1", u"TabStop,Invisible,Disable");
    Catcher& last = Add(u"last", u"L0,T0,L1,T1", u"TabStop");

    EXPECT_TRUE(Send(platform::kMessageKeyDown, 0, platform::kKeyTab));
    EXPECT_EQ(TakeLog(), std::vector<std::string>{"first enter"});
    EXPECT_EQ(viewer.GetFocus(), &first);
    Send(platform::kMessageKeyDown, 0, platform::kKeyTab);
    Send(platform::kMessageKeyDown, 0, platform::kKeyTab);
    Send(platform::kMessageKeyDown, 0, platform::kKeyTab);
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"first leave", "hidden enter", "hidden leave", "last enter",
                                                   "last leave", "first enter"}));

    platform::testing::SetShiftKeyDown(true);
    Send(platform::kMessageKeyDown, 0, platform::kKeyTab);
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"first leave", "last enter"}));
    EXPECT_EQ(viewer.GetFocus(), &last);

    // Without a focus Shift+Tab enters the last stop.
    viewer.PostEvent(EventFor(last, EventCode::kGiveUpFocus));
    ASSERT_EQ(viewer.GetFocus(), nullptr);
    Send(platform::kMessageKeyDown, 0, platform::kKeyTab);
    EXPECT_EQ(TakeLog(), std::vector<std::string>{"last enter"});
}

TEST_F(Input, TabFromAFocusThatIsNoStop)
{
    Catcher& only = Add(u"only", u"L0,T0,L1,T1", u"TabStop");
    Catcher& plain = Add(u"plain", u"L0,T0,L1,T1");
    // The only stop is left and entered again.
    viewer.PostEvent(EventFor(only, EventCode::kTakeFocus));
    EXPECT_TRUE(Send(platform::kMessageKeyDown, 0, platform::kKeyTab));
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"only leave", "only enter"}));
    // A focus that is no stop stays, and nobody is entered.
    viewer.PostEvent(EventFor(plain, EventCode::kTakeFocus));
    EXPECT_TRUE(Send(platform::kMessageKeyDown, 0, platform::kKeyTab));
    EXPECT_TRUE(TakeLog().empty());
    EXPECT_EQ(viewer.GetFocus(), &plain);
}

TEST_F(Input, EventsMoveFocusAndCaptureAndCommandsAreGuarded)
{
    Catcher& button = Add(u"button", u"L0,T0,L10,T10");

    // An unknown id leaves the focus alone and doesn't reach the host.
    EXPECT_FALSE(viewer.PostEvent({u"x", u"nobody", EventCode::kTakeFocus, {}}));
    EXPECT_TRUE(host.commands.empty());
    EXPECT_TRUE(button.Notify(EventCode::kTakeFocus));
    EXPECT_EQ(viewer.GetFocus(), &button);
    // Giving up the focus never reaches the host.
    EXPECT_TRUE(viewer.PostEvent({u"x", u"nobody", EventCode::kGiveUpFocus, {}}));
    EXPECT_EQ(viewer.GetFocus(), &button);
    EXPECT_TRUE(button.Notify(EventCode::kGiveUpFocus));
    EXPECT_EQ(viewer.GetFocus(), nullptr);
    EXPECT_EQ(host.commands.size(), 1u);

    // Capture: taken when nobody holds it, given back only by its holder.
    EXPECT_TRUE(button.Notify(EventCode::kTakeCapture));
    EXPECT_EQ(platform::GetCaptureWindow(), host.window);
    EXPECT_EQ(CaptureGuard::GetCaptureOwner(), &viewer);
    EXPECT_TRUE(button.Notify(EventCode::kReleaseCapture));
    EXPECT_EQ(platform::GetCaptureWindow(), nullptr);
    EXPECT_EQ(CaptureGuard::GetCaptureOwner(), nullptr);
    const platform::WindowHandle other = platform::CreateDialogWindow(nullptr, 129, NeverHandles);
    platform::CaptureMouse(other);
    button.Notify(EventCode::kTakeCapture);
    button.Notify(EventCode::kReleaseCapture);
    EXPECT_EQ(platform::GetCaptureWindow(), other);

    // A second command while the first is inside the host is dropped and
    // counted as handled; capture codes still pass.
    host.commands.clear();
    host.whileInside = [&](const WidgetEvent& event) {
        if (event.Code == EventCode::kCommand) {
            EXPECT_TRUE(button.Notify(EventCode::kCommand, u"Again"));
            EXPECT_TRUE(button.Notify(EventCode::kMouseLeft));
            EXPECT_TRUE(button.Notify(EventCode::kReleaseCapture));
        }
    };
    EXPECT_TRUE(button.Notify(EventCode::kCommand));
    ASSERT_EQ(host.commands.size(), 2u);
    EXPECT_EQ(host.commands[0].Name, u"button");
    EXPECT_EQ(host.commands[0].Id, button.GetId());
    EXPECT_EQ(host.commands[1].Code, EventCode::kReleaseCapture);
    host.whileInside = nullptr;
    EXPECT_TRUE(button.Notify(EventCode::kCommand, u"Again"));
    EXPECT_EQ(host.commands.back().Name, u"Again");
}

} // namespace
