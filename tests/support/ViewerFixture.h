#pragma once

#include "engine/Viewer.h"
#include "engine/WidgetEvent.h"
#include "engine/WidgetHost.h"
#include "layouttext/AttributeMap.h"
#include "platform/Paint.h"
#include "platform/SystemStartup.h"
#include "support/MapOf.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// A host that has no window and keeps the commands that reach it.
class RecordingHost : public WidgetHost {
public:
    platform::WindowHandle GetWidgetWindow() override { return window; }
    bool OnWidgetCommand(Viewer&, const WidgetEvent& event) override
    {
        commands.push_back(event);
        if (whileInside)
            whileInside(event);
        return true;
    }

    platform::WindowHandle window = nullptr;
    std::vector<WidgetEvent> commands;
    // Runs inside each command, as a modal loop of the host would.
    std::function<void(const WidgetEvent&)> whileInside;
};

// A rectangle as "x,y,width,height", each number as %g writes it.
std::string Describe(const RectF& r);
// A widget's value under key, or "<unknown>" when it has no such key.
std::u16string Get(Widget& widget, const char16_t* key);

// Makes a plain positioned widget for a section "Plain" and an input widget
// for "Input"; nothing for other names.
bool TestWidgetFactory(const WideString& sectionName, Viewer* viewer, std::unique_ptr<Widget>& widget);

// A Viewer on a recording host, with GDI+ running for its bitmap. Its
// factory is the test's own unless a fixture passes the real one.
class ViewerFixture : public ::testing::Test {
public:
    explicit ViewerFixture(WidgetFactoryFunction factory = TestWidgetFactory) : viewer(&host, factory) {}

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

    // The codes of the commands that reached the host since the last call.
    std::vector<std::uint32_t> Codes()
    {
        std::vector<std::uint32_t> codes;
        for (const WidgetEvent& event : host.commands)
            codes.push_back(event.Code);
        host.commands.clear();
        return codes;
    }
    platform::GdiplusToken gdiplus = 0;
    RecordingHost host;
    Viewer viewer;
};
