#pragma once

#include "platform/standin/TestHooks.h"
#include "platform/Window.h"
#include "support/StandInTest.h"
#include "support/ViewerFixture.h"

#include <gtest/gtest.h>

// A Viewer whose host has a shown window of the stand-in, with a bitmap of
// 100 by 50 pixels and an empty call log.
class StandInViewerFixture : public ViewerFixture {
public:
    explicit StandInViewerFixture(WidgetFactoryFunction factory = TestWidgetFactory) : ViewerFixture(factory) {}

protected:
    void SetUp() override
    {
        ViewerFixture::SetUp();
        platform::testing::ResetStandIn();
        host.window = platform::CreateDialogWindow(nullptr, 129, NeverHandles);
        ASSERT_NE(host.window, nullptr);
        platform::ShowWindowAs(host.window, platform::kShowNormal);
        ResizeView(100, 50);
        platform::testing::TakeCallLog();
    }
    void TearDown() override
    {
        ViewerFixture::TearDown();
        platform::testing::ResetStandIn();
    }
};
