// The Viewer and its host window on the stand-in: the input it hands to the
// widgets, and what it tells the window after a repaint.
#include "engine/CaptureGuard.h"
#include "engine/InputWidget.h"

#include "platform/Input.h"
#include "platform/MessageQueue.h"
#include "platform/Paint.h"
#include "platform/standin/TestHooks.h"
#include "platform/SystemSettings.h"
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
    Catcher(Viewer* owner, std::vector<std::string>& log, const char* name, const char16_t* pos,
            const char16_t* option)
        : InputWidget(owner), log(log), label(name)
    {
        const std::u16string wide(label.begin(), label.end());
        Load(MapOf({{u"Name", wide.c_str()}, {u"Pos", pos}, {u"Option", option}}));
    }

    bool OnEvent(platform::WindowHandle, std::uint32_t message, std::uintptr_t, std::intptr_t,
                 const PointF& point) override
    {
        char text[64];
        std::snprintf(text, sizeof text, " %x %g,%g", message, point.x, point.y);
        log.push_back(label + text);
        return HitTest(point);
    }

    bool SetAttribute(const WideString& key, const WideString& value) override
    {
        if (!(key == u"EditVisible"))
            return InputWidget::SetAttribute(key, value);
        log.push_back(label + (value == u"true" ? " enter" : " leave"));
        Notify(value == u"true" ? EventCode::kTakeFocus : EventCode::kGiveUpFocus);
        return true;
    }

private:
    std::vector<std::string>& log;
    std::string label;
};

class Input : public StandInViewerFixture {
protected:
    Catcher& Add(const char* name, const char16_t* pos, const char16_t* option = u"")
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
    bool Tab() { return Send(platform::kMessageKeyDown, 0, platform::kKeyTab); }
    bool Focus(Widget& widget, std::uint32_t code = EventCode::kTakeFocus)
    {
        return viewer.PostEvent({widget.GetName(), widget.GetId(), code, {}});
    }
    std::vector<std::string> TakeLog() { return std::exchange(log, {}); }

    std::vector<std::string> log;
};

using Log = std::vector<std::string>;

TEST_F(Input, MessagesGoToTheFocusThenFromTheTopDown)
{
    Catcher& low = Add("low", u"L0,T0,L50,T50");
    Add("high", u"L25,T0,L75,T50");
    Add("off", u"L0,T0,L100,T50", u"Disable");
    Add("hidden", u"L0,T0,L100,T50", u"Invisible");

    // The later of two overlapping widgets takes the message; a declined
    // one passes down. Disabled and invisible widgets see nothing.
    EXPECT_TRUE(Send(platform::kMessageMouseMove, PointParam(30, 10)));
    EXPECT_EQ(TakeLog(), Log{"high 200 30,10"});
    EXPECT_TRUE(Send(platform::kMessageMouseMove, PointParam(10, 10)));
    EXPECT_EQ(TakeLog(), (Log{"high 200 10,10", "low 200 10,10"}));
    EXPECT_FALSE(Send(platform::kMessageMouseMove, PointParam(-2, -3)));
    EXPECT_EQ(TakeLog(), (Log{"high 200 -2,-3", "low 200 -2,-3"}));

    // The focus sees a move first, and a second time in the walk when it
    // declines it.
    EXPECT_TRUE(Focus(low));
    EXPECT_EQ(viewer.GetFocus(), &low);
    EXPECT_TRUE(Send(platform::kMessageMouseMove, PointParam(30, 10)));
    EXPECT_EQ(TakeLog(), Log{"low 200 30,10"});
    EXPECT_FALSE(Send(platform::kMessageMouseMove, PointParam(80, 10)));
    EXPECT_EQ(TakeLog(), (Log{"low 200 80,10", "high 200 80,10", "low 200 80,10"}));

    // A press outside the view goes to the focus alone and isn't taken.
    EXPECT_FALSE(Send(platform::kMessageLeftButtonDown, PointParam(100, 10)));
    EXPECT_EQ(TakeLog(), Log{"low 201 100,10"});
    // Other messages aren't offered to the focus first.
    const platform::PixelRect client = platform::GetClientBounds(host.window);
    platform::testing::SetCursorScreenPosition(client.left, client.top);
    EXPECT_TRUE(Send(platform::kMessageTimer));
    EXPECT_EQ(TakeLog(), (Log{"high 113 0,0", "low 113 0,0"}));

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

TEST_F(Input, PointsAreMappedAndPressesActivateTheWindow)
{
    Add("all", u"L-1000,T-1000,L1000,T1000");
    // Points in lParam are signed, and the scale and origin map them.
    viewer.Dpi = 96;
    viewer.Zoom = 2;
    viewer.LogicalOriginX = 10;
    EXPECT_TRUE(Send(platform::kMessageLeftButtonUp, PointParam(-20, 30)));
    EXPECT_EQ(TakeLog(), Log{"all 202 0,15"});
    // Presses activate the window; releases and the wheel don't.
    platform::testing::TakeCallLog();
    for (std::uint32_t message : {platform::kMessageRightButtonDown, platform::kMessageMiddleButtonDoubleClick,
                                  platform::kMessageLeftButtonUp, platform::kMessageMouseWheel})
        Send(message);
    EXPECT_EQ(platform::testing::TakeCallLog(), (Log{"ActivateWindow", "ActivateWindow"}));
}

// Tab leaves the focus and enters the next stop, whatever its state, and
// wraps around; Shift goes the other way.
TEST_F(Input, TabWalksTheStopsAndWrapsAround)
{
    EXPECT_FALSE(Tab());
    Catcher& first = Add("first", u"L0,T0,L1,T1", u"TabStop");
    Catcher& plain = Add("plain", u"L0,T0,L1,T1");
    Add("hidden", u"L0,T0,L1,T1", u"TabStop,Invisible,Disable");
    Catcher& last = Add("last", u"L0,T0,L1,T1", u"TabStop");

    EXPECT_TRUE(Tab());
    EXPECT_EQ(viewer.GetFocus(), &first);
    Tab();
    Tab();
    Tab();
    EXPECT_EQ(TakeLog(), (Log{"first enter", "first leave", "hidden enter", "hidden leave", "last enter",
                              "last leave", "first enter"}));
    platform::testing::SetShiftKeyDown(true);
    Tab();
    EXPECT_EQ(TakeLog(), (Log{"first leave", "last enter"}));
    EXPECT_EQ(viewer.GetFocus(), &last);

    // Without a focus Shift+Tab enters the last stop.
    Focus(last, EventCode::kGiveUpFocus);
    ASSERT_EQ(viewer.GetFocus(), nullptr);
    Tab();
    EXPECT_EQ(TakeLog(), Log{"last enter"});
    platform::testing::SetShiftKeyDown(false);

    // A focus that is no stop stays, and nobody is entered.
    Focus(plain);
    EXPECT_TRUE(Tab());
    EXPECT_TRUE(TakeLog().empty());
    EXPECT_EQ(viewer.GetFocus(), &plain);

    // The only stop is left and entered again.
    viewer.Clear();
    Catcher& only = Add("only", u"L0,T0,L1,T1", u"TabStop");
    Focus(only);
    EXPECT_TRUE(Tab());
    EXPECT_EQ(TakeLog(), (Log{"only leave", "only enter"}));
}

TEST_F(Input, EventsMoveFocusAndCaptureAndCommandsAreGuarded)
{
    Catcher& button = Add("button", u"L0,T0,L10,T10");

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

// A widget with a native window that counts how often it was placed.
class Child : public WindowWidget {
public:
    Child(Viewer* owner, const char16_t* pos) : WindowWidget(owner) { Load(MapOf({{u"Pos", pos}})); }
    void SyncWindow() override { ++syncs; }

    int syncs = 0;
};

// The stand-in records what the window is told: the invalidated rectangles
// and the forced updates.
using Flush = StandInViewerFixture;

TEST_F(Flush, TellsTheWindowWhatWasRepaintedWithinTheView)
{
    using platform::testing::TakeCallLog;
    EXPECT_FALSE(viewer.Flush(false, true));
    EXPECT_TRUE(TakeCallLog().empty());

    // Two repaints make one rectangle around both, cut to the view.
    viewer.PaintRect({-10, 5, 20, 10});
    viewer.PaintRect({90, 40, 30, 30});
    EXPECT_TRUE(viewer.Flush(false, true));
    EXPECT_EQ(TakeCallLog(), (Log{"InvalidateWindowRect 0,5,100,50", "UpdateWindowNow"}));
    EXPECT_FALSE(viewer.Flush(false, true));

    // Left and top edges are truncated, right and bottom ones rounded up.
    viewer.Dpi = static_cast<float>(platform::GetScreenDpiX());
    viewer.Zoom = 1.25f;
    viewer.PaintRect({1.3f, 2, 2, 2.1f});
    EXPECT_TRUE(viewer.Flush(false, false));
    EXPECT_EQ(TakeCallLog(), Log{"InvalidateWindowRect 1,2,5,6"});

    // Child windows that the repaint overlaps are placed again; with all,
    // every one of them, and the window is updated at once.
    Child touching(&viewer, u"L20,T0,L30,T10");
    Child overlapping(&viewer, u"L5,T5,L15,T15");
    viewer.Zoom = 1;
    viewer.PaintRect({0, 0, 20, 10});
    EXPECT_TRUE(viewer.Flush(false, false));
    EXPECT_EQ(touching.syncs, 0);
    EXPECT_EQ(overlapping.syncs, 1);
    EXPECT_TRUE(viewer.Flush(true, false));
    EXPECT_EQ(touching.syncs, 1);
    EXPECT_EQ(overlapping.syncs, 2);
    EXPECT_EQ(TakeCallLog(), (Log{"InvalidateWindowRect 0,0,20,10", "InvalidateWindowRect all", "UpdateWindowNow"}));

    // Without a live window nothing is told and the area stays dirty.
    viewer.PaintRect({0, 0, 1, 1});
    platform::DestroyDialogWindow(host.window);
    TakeCallLog();
    EXPECT_FALSE(viewer.Flush(false, true));
    EXPECT_EQ(Describe(viewer.GetDirtyRect()), "0,0,1,1");
}

TEST_F(Flush, BlitNeedsAContextAndABitmap)
{
    platform::WindowContextScope context(host.window);
    viewer.Resize(nullptr, -1, -1);
    EXPECT_FALSE(viewer.Blit(context.Context()));
    ResizeView(10, 10);
    EXPECT_FALSE(viewer.Blit(nullptr));
    EXPECT_TRUE(viewer.Blit(context.Context()));
}

} // namespace
