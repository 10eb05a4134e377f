#include "app/DialogWindow.h"
#include "app/PendingWindowList.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "platform/ThreadState.h"
#include "support/StandInTest.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Keeps the ids of the messages it gets and whether it was bound to the
// window of each.
class RecordingDialog : public DialogWindow {
public:
    bool ProcessWindowMessage(platform::WindowHandle window, std::uint32_t message, std::uintptr_t,
                              std::intptr_t, std::intptr_t& result) override
    {
        messages.push_back(message);
        bound.push_back(GetWindow() == window);
        result = 1;
        return message == platform::kMessageInitDialog;
    }

    std::vector<std::uint32_t> messages;
    std::vector<bool> bound;
};

} // namespace

using DialogWindowBinding = StandInTest;

// Bound from the very first message, before the initialisation, up to the
// last, and the next creation on the thread is not blocked by a stale
// entry of a failed one. A creation whose preparation fails sets the last
// error and makes no window.
TEST_F(DialogWindowBinding, BindsFromTheFirstMessageToTheLast)
{
    RecordingDialog dialog;
    platform::testing::FailNextDialogCreation();
    EXPECT_EQ(dialog.Create(nullptr, 129), nullptr);
    EXPECT_EQ(dialog.Create(nullptr, 4711), nullptr);
    EXPECT_TRUE(dialog.messages.empty());

    platform::WindowHandle window = dialog.Create(nullptr, 129);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(dialog.GetWindow(), window);
    EXPECT_EQ(dialog.messages, (std::vector<std::uint32_t>{platform::kMessageSetFont, platform::kMessageInitDialog}));
    EXPECT_EQ(dialog.bound, (std::vector<bool>{true, true}));
    EXPECT_EQ(PendingWindowList::Process().Take(platform::CurrentThreadId()), nullptr);
    platform::SendToWindow(window, platform::kMessageUser, 0, 0);
    EXPECT_EQ(dialog.messages.back(), platform::kMessageUser);
    ASSERT_TRUE(platform::DestroyDialogWindow(window));
    EXPECT_EQ(dialog.messages.back(), platform::kMessageNcDestroy);
    EXPECT_EQ(dialog.GetWindow(), nullptr);

    RecordingDialog waiting;
    platform::ThreadId thread = platform::CurrentThreadId();
    ASSERT_TRUE(PendingWindowList::Process().Add(thread, &waiting));
    platform::SetLastErrorCode(0);
    EXPECT_EQ(dialog.Create(nullptr, 129), nullptr);
    EXPECT_EQ(platform::GetLastErrorCode(), 14u);
    EXPECT_TRUE(platform::testing::LiveWindows().empty());
    EXPECT_EQ(PendingWindowList::Process().Take(thread), &waiting);
}

TEST(CenterWithin, CentresAndClampsInsideTheArea)
{
    struct Case {
        platform::PixelRect window;
        platform::PixelRect area;
        std::int32_t x;
        std::int32_t y;
    };
    const Case cases[] = {
        {{0, 0, 368, 261}, {0, 0, 1280, 1000}, 456, 370},
        {{500, 500, 868, 761}, {0, 0, 1280, 1000}, 456, 370},
        // A work area that doesn't start at the origin: a task bar on the left.
        {{0, 0, 100, 50}, {200, 0, 1000, 600}, 550, 275},
        // Odd sizes round towards the top left like the system's arithmetic.
        {{0, 0, 101, 51}, {0, 0, 1001, 601}, 450, 275},
        // Larger than the area: the left and top edges stay inside.
        {{0, 0, 1400, 1100}, {0, 0, 1280, 1000}, 0, 0},
        {{0, 0, 1400, 1100}, {100, 40, 1380, 1040}, 100, 40},
        // A second monitor left of the first.
        {{0, 0, 368, 261}, {-1280, 0, 0, 1000}, -824, 370},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.area.left << "," << c.area.top << " " << c.window.Width() << "x"
                                        << c.window.Height());
        WindowOrigin origin = CenterWithin(c.window, c.area);
        EXPECT_EQ(origin.x, c.x);
        EXPECT_EQ(origin.y, c.y);
    }
}
