#include "engine/InputWidget.h"

#include "layouttext/AttributeMap.h"
#include "platform/Paint.h"
#include "platform/standin/TestHooks.h"
#include "platform/SystemSettings.h"
#include "platform/Window.h"
#include "support/StandInViewerFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

std::string Describe(const RectF& r)
{
    return std::to_string(static_cast<int>(r.x)) + "," + std::to_string(static_cast<int>(r.y)) + "," +
           std::to_string(static_cast<int>(r.width)) + "," + std::to_string(static_cast<int>(r.height));
}

// A widget with a native window that counts how often it was placed.
class Child : public WindowWidget {
public:
    Child(Viewer* owner, const char16_t* pos) : WindowWidget(owner)
    {
        AttributeMap map;
        map.Set(u"Pos", pos);
        Load(map);
    }
    void SyncWindow() override { ++syncs; }

    int syncs = 0;
};

// The stand-in records what the window is told: the invalidated rectangles
// and the forced updates.
class Flush : public StandInViewerFixture {
protected:
    static std::vector<std::string> Calls() { return platform::testing::TakeCallLog(); }
};

TEST_F(Flush, TellsTheWindowWhatWasRepaintedWithinTheView)
{
    EXPECT_FALSE(viewer.Flush(false, true));
    EXPECT_TRUE(Calls().empty());

    // Two repaints make one rectangle around both, cut to the view.
    viewer.PaintRect({-10, 5, 20, 10});
    viewer.PaintRect({90, 40, 30, 30});
    EXPECT_TRUE(viewer.Flush(false, true));
    EXPECT_EQ(Calls(), (std::vector<std::string>{"InvalidateWindowRect 0,5,100,50", "UpdateWindowNow"}));
    EXPECT_FALSE(viewer.Flush(false, true));

    // Left and top edges are truncated, right and bottom ones rounded up.
    viewer.Dpi = static_cast<float>(platform::GetScreenDpiX());
    viewer.Zoom = 1.25f;
    viewer.PaintRect({1.3f, 2, 2, 2.1f});
    EXPECT_TRUE(viewer.Flush(false, false));
    EXPECT_EQ(Calls(), std::vector<std::string>{"InvalidateWindowRect 1,2,5,6"});

    // Without a live window nothing is told and the area stays dirty.
    viewer.PaintRect({0, 0, 1, 1});
    platform::DestroyDialogWindow(host.window);
    Calls();
    EXPECT_FALSE(viewer.Flush(false, true));
    EXPECT_EQ(Describe(viewer.GetDirtyRect()), "0,0,1,1");
}

TEST_F(Flush, PlacesTheChildWindowsThatTheRepaintOverlaps)
{
    Child touching(&viewer, u"L20,T0,L30,T10");
    Child overlapping(&viewer, u"L5,T5,L15,T15");
    viewer.PaintRect({0, 0, 20, 10});
    EXPECT_TRUE(viewer.Flush(false, false));
    EXPECT_EQ(touching.syncs, 0);
    EXPECT_EQ(overlapping.syncs, 1);

    EXPECT_TRUE(viewer.Flush(true, false));
    EXPECT_EQ(touching.syncs, 1);
    EXPECT_EQ(overlapping.syncs, 2);
    EXPECT_EQ(Calls(), (std::vector<std::string>{"InvalidateWindowRect 0,0,20,10", "InvalidateWindowRect all",
                                                 "UpdateWindowNow"}));
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
