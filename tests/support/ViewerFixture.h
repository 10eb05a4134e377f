#pragma once

#include "engine/Viewer.h"
#include "engine/WidgetEvent.h"
#include "engine/WidgetHost.h"
#include "platform/Paint.h"
#include "platform/SystemStartup.h"

#include <gtest/gtest.h>

#include <vector>

// A host that has no window and keeps the commands that reach it.
class RecordingHost : public WidgetHost {
public:
    platform::WindowHandle GetWidgetWindow() override { return window; }
    bool OnWidgetCommand(Viewer&, const WidgetEvent& event) override
    {
        commands.push_back(event);
        return true;
    }

    platform::WindowHandle window = nullptr;
    std::vector<WidgetEvent> commands;
};

// A Viewer on a recording host, with GDI+ running for its bitmap.
class ViewerFixture : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(platform::StartGdiplus(gdiplus), 0); }
    void TearDown() override
    {
        viewer.Clear();
        viewer.Resize(nullptr, -1, -1);
        platform::StopGdiplus(gdiplus);
    }

    // Gives the view a bitmap of width by height device pixels, made for
    // the screen.
    void ResizeView(int width, int height)
    {
        platform::WindowContextScope screen(nullptr);
        ASSERT_TRUE(viewer.Resize(screen.Context(), width, height));
    }

    platform::GdiplusToken gdiplus = 0;
    RecordingHost host;
    Viewer viewer{&host};
};
