#include "app/Program.h"
#include "loop/MessageLoop.h"
#include "loop/MessageLoopRegistry.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "platform/ThreadState.h"
#include "support/StandInTest.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using platform::testing::WindowRecord;

class ProgramTest : public StandInTest {
protected:
    // Runs the program; the first time its queue waits, act runs with the
    // main window, after a look at it. Later waits end the loop with 99, so a
    // close that doesn't work shows as that exit code.
    int RunAndThen(std::function<void(platform::WindowHandle)> act, std::u16string_view commandLine = u"")
    {
        bool acted = false;
        platform::testing::SetQueueWaitHook([&] {
            if (acted) {
                platform::PostQuit(99);
                return;
            }
            acted = true;
            platform::WindowHandle window = platform::testing::FindWindowByCaption(u"Sondara");
            shownWhileRunning = platform::testing::DescribeWindow(window, whileRunning);
            loopWhileRunning = MessageLoopRegistry::FindCurrentThreadLoop();
            act(window);
        });
        return ProgramMain(nullptr, nullptr, commandLine, platform::kShowNormal);
    }

    WindowRecord whileRunning;
    bool shownWhileRunning = false;
    MessageLoop* loopWhileRunning = nullptr;
};

void PostCancel(platform::WindowHandle window)
{
    platform::PostToWindow(window, platform::kMessageCommand, 2, 0);
}

} // namespace

// The window is shown centred in the work area, with the timer that keeps
// idle passes coming while nothing else happens and drops accepted; all
// that starts is stopped in reverse order, also when no window comes.
TEST_F(ProgramTest, StartsShowsAndStopsInOrder)
{
    platform::testing::SetWorkArea({0, 0, 1280, 1000});
    RunAndThen(PostCancel);
    ASSERT_TRUE(shownWhileRunning);
    EXPECT_TRUE(whileRunning.shown);
    EXPECT_EQ(whileRunning.lastShowCommand, platform::kShowNormal);
    const platform::PixelRect bounds = whileRunning.bounds;
    EXPECT_EQ(bounds.left, 640 - bounds.Width() / 2);
    EXPECT_EQ(bounds.top, 500 - bounds.Height() / 2);
    EXPECT_EQ(whileRunning.timers.size(), 1u);
    EXPECT_TRUE(whileRunning.acceptsDrops);
    EXPECT_NE(loopWhileRunning, nullptr);
    EXPECT_EQ(platform::testing::TakeCallLog(),
              (std::vector<std::string>{"InitializeCom", "InitializeCommonControls 4", "StartGdiplus",
                                        "CreateDialogWindow 129", "ShowWindowAs 1", "DestroyDialogWindow",
                                        "StopGdiplus 1", "UninitializeCom"}));
    EXPECT_EQ(platform::testing::OpenComInitializations(), 0);
    EXPECT_EQ(platform::testing::OpenGdiplusSessions(), 0);
    EXPECT_EQ(MessageLoopRegistry::Process(), nullptr);

    platform::testing::FailNextDialogCreation();
    EXPECT_EQ(ProgramMain(nullptr, nullptr, u"", platform::kShowNormal), 0);
    EXPECT_EQ(platform::testing::TakeCallLog(),
              (std::vector<std::string>{"InitializeCom", "InitializeCommonControls 4", "StartGdiplus",
                                        "CreateDialogWindow 129", "StopGdiplus 1", "UninitializeCom"}));
    EXPECT_EQ(platform::testing::OpenGdiplusSessions(), 0);
}

// The close box and Esc reach the dialog as this same cancel command, made
// by the system's dialog manager; the end-to-end scenarios press them on
// the real program (close_normally, esc_during_check, close_box_during_check).
// Enter, which the system's dialog processing turns into the OK command,
// and other commands leave the program running, until the later wait ends
// it with 99.
TEST_F(ProgramTest, EveryWayOutEndsWithExitCodeTwoAndNothingElseCloses)
{
    struct Way {
        const char* name;
        std::function<void(platform::WindowHandle)> act;
        int exitCode;
    };
    const Way ways[] = {
        {"cancel command", PostCancel, 2},
        {"cancel from an accelerator",
         [](platform::WindowHandle w) { platform::PostToWindow(w, platform::kMessageCommand, (1u << 16) | 2u, 0); }, 2},
        {"Enter and other commands",
         [](platform::WindowHandle w) {
             platform::PostToWindow(w, platform::kMessageKeyDown, platform::kKeyReturn, 0);
             for (std::uintptr_t command : {1u, (1u << 16) | 1u, 0x10003u})
                 platform::PostToWindow(w, platform::kMessageCommand, command, 0);
         },
         99},
    };
    for (const Way& way : ways) {
        SCOPED_TRACE(way.name);
        platform::testing::ResetStandIn();
        // The command line is never read.
        EXPECT_EQ(RunAndThen(way.act, u"C:\\sounds\\a.wav /x"), way.exitCode);
        if (way.exitCode == 2) {
            EXPECT_TRUE(platform::testing::LiveWindows().empty());
        }
    }
}
