#include "engine/InputWidget.h"

#include "platform/SystemSettings.h"
#include "support/ViewerFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace {

class Window : public WindowWidget {
public:
    explicit Window(Viewer* owner) : WindowWidget(owner) {}
    void SyncWindow() override {}
};

using ViewerLists = ViewerFixture;

TEST_F(ViewerLists, WidgetsEnterAndLeaveTheInputAndWindowLists)
{
    auto input = std::make_unique<InputWidget>(&viewer);
    auto window = std::make_unique<Window>(&viewer);
    InputWidget* inputWidget = input.get();
    Window* windowWidget = window.get();
    viewer.AppendWidget(std::move(input));
    viewer.AppendWidget(std::move(window));
    viewer.AppendWidget(std::make_unique<PositionedWidget>(&viewer));
    EXPECT_EQ(viewer.WidgetCount(), 3u);

    // Bringing a widget to the front gives it the focus; sending it back takes it away.
    EXPECT_TRUE(viewer.BringToFront(inputWidget));
    EXPECT_EQ(viewer.GetFocus(), inputWidget);
    EXPECT_EQ(viewer.GetLastWidget(), inputWidget);
    EXPECT_TRUE(viewer.BringToFront(windowWidget));
    EXPECT_EQ(viewer.GetFocus(), windowWidget);
    EXPECT_TRUE(viewer.SendToBack(windowWidget));
    EXPECT_EQ(viewer.GetFocus(), nullptr);
    EXPECT_EQ(viewer.GetLastWidget(), inputWidget);
    EXPECT_FALSE(viewer.BringToFront(nullptr));
    EXPECT_FALSE(viewer.SendToBack(nullptr));
    EXPECT_FALSE(viewer.AddInputWidget(nullptr));

    // A widget that goes takes itself out of the lists and the focus.
    viewer.BringToFront(inputWidget);
    EXPECT_TRUE(viewer.RemoveInputWidget(inputWidget));
    EXPECT_EQ(viewer.GetFocus(), nullptr);
    viewer.AddInputWidget(inputWidget);

    viewer.Clear();
    EXPECT_EQ(viewer.WidgetCount(), 0u);
    EXPECT_FALSE(viewer.HasWidget(0));
    EXPECT_EQ(viewer.GetFocus(), nullptr);

    // A widget outside the widget list, as the parts of a composite widget.
    {
        InputWidget part(&viewer);
        viewer.BringToFront(&part);
        EXPECT_EQ(viewer.GetFocus(), &part);
    }
    EXPECT_EQ(viewer.GetFocus(), nullptr);
}

TEST_F(ViewerLists, ResizeReplacesTheBitmapAndLearnsTheResolution)
{
    EXPECT_EQ(viewer.Dpi, 0);
    ResizeView(40, 30);
    EXPECT_EQ(viewer.Dpi, static_cast<float>(platform::GetScreenDpiX()));
    EXPECT_EQ(viewer.GetBitmapRect().width, 40);
    EXPECT_EQ(viewer.GetBitmapRect().height, 30);

    // A resolution once known stays; a size of 0 leaves a view without extent.
    viewer.Dpi = 72;
    ResizeView(0, 30);
    EXPECT_EQ(viewer.Dpi, 72);
    EXPECT_EQ(viewer.GetViewWidth(), 0);
    EXPECT_EQ(viewer.GetViewHeight(), 0);

    ResizeView(50, 20);
    EXPECT_TRUE(viewer.Resize(nullptr, -1, 5));
    EXPECT_EQ(viewer.GetBitmapRect().width, 0);
    EXPECT_FALSE(viewer.Resize(nullptr, 10, 10));
    EXPECT_EQ(viewer.GetBitmapRect().width, 0);
}

} // namespace
