#include "app/DialogWindow.h"
#include "app/PendingWindowList.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "platform/ThreadState.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Keeps the ids of the messages it gets and the window it had for each.
class RecordingDialog : public DialogWindow {
public:
    bool ProcessWindowMessage(platform::WindowHandle window, std::uint32_t message, std::uintptr_t,
                              std::intptr_t, std::intptr_t& result) override
    {
        messages.push_back(message);
        boundAtMessage.push_back(GetWindow() == window);
        if (message == platform::kMessageInitDialog) {
            result = 1;
            return true;
        }
        return false;
    }
    void OnFinalMessage(platform::WindowHandle window) override { finalWindow = window; }

    std::vector<std::uint32_t> messages;
    std::vector<bool> boundAtMessage;
    platform::WindowHandle finalWindow = nullptr;
};

class DialogWindowBinding : public ::testing::Test {
protected:
    void SetUp() override { platform::testing::ResetStandIn(); }
    void TearDown() override { platform::testing::ResetStandIn(); }
};

} // namespace

TEST_F(DialogWindowBinding, BindsAtTheFirstMessageAndDispatchesEveryLaterOne)
{
    RecordingDialog dialog, second;
    platform::WindowHandle window = dialog.Create(nullptr, 129);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(dialog.GetWindow(), window);
    EXPECT_EQ(dialog.messages, (std::vector<std::uint32_t>{platform::kMessageSetFont, platform::kMessageInitDialog}));
    EXPECT_EQ(dialog.boundAtMessage, (std::vector<bool>{true, true}));
    EXPECT_EQ(PendingWindowList::Process().Take(platform::CurrentThreadId()), nullptr);

    // A second dialog gets its own messages.
    platform::WindowHandle secondWindow = second.Create(nullptr, 129);
    ASSERT_NE(secondWindow, nullptr);
    platform::SendToWindow(secondWindow, platform::kMessageUser + 2, 0, 0);
    platform::SendToWindow(window, platform::kMessageUser, 0, 0);
    EXPECT_EQ(dialog.messages.back(), platform::kMessageUser);
    EXPECT_EQ(second.messages.back(), platform::kMessageUser + 2);

    ASSERT_TRUE(platform::DestroyDialogWindow(window));
    EXPECT_EQ(dialog.messages.back(), platform::kMessageNcDestroy);
    EXPECT_EQ(dialog.GetWindow(), nullptr);
    EXPECT_EQ(dialog.finalWindow, window);
}

TEST_F(DialogWindowBinding, FailedCreationLeavesNothingPending)
{
    RecordingDialog dialog;
    platform::testing::FailNextDialogCreation();
    EXPECT_EQ(dialog.Create(nullptr, 129), nullptr);
    EXPECT_TRUE(dialog.messages.empty());
    EXPECT_EQ(dialog.Create(nullptr, 4711), nullptr);
    // The next creation on this thread is not blocked by a stale entry.
    EXPECT_NE(dialog.Create(nullptr, 129), nullptr);
}

TEST_F(DialogWindowBinding, PreparationFailureSetsTheLastErrorAndMakesNoWindow)
{
    RecordingDialog waiting, dialog;
    platform::ThreadId thread = platform::CurrentThreadId();
    ASSERT_TRUE(PendingWindowList::Process().Add(thread, &waiting));
    platform::SetLastErrorCode(0);
    EXPECT_EQ(dialog.Create(nullptr, 129), nullptr);
    EXPECT_EQ(platform::GetLastErrorCode(), 14u);
    EXPECT_TRUE(platform::testing::LiveWindows().empty());
    EXPECT_EQ(PendingWindowList::Process().Take(thread), &waiting);
}
