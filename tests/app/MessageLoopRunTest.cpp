#include "loop/MessageLoop.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "platform/Window.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

using platform::Message;

// Uses up every message and counts them.
class CountingFilter : public MessageFilter {
public:
    bool PreTranslateMessage(Message&) override
    {
        ++seen;
        return true;
    }
    int seen = 0;
};

// A loop that counts its idle passes and the counts they were given.
class CountingLoop : public MessageLoop {
public:
    bool OnIdle(int idleCount) override
    {
        counts.push_back(idleCount);
        return MessageLoop::OnIdle(idleCount);
    }
    std::vector<int> counts;
};

class MessageLoopRun : public ::testing::Test {
protected:
    void SetUp() override { platform::testing::ResetStandIn(); }
    void TearDown() override { platform::testing::ResetStandIn(); }

    // Runs the loop; each time it waits on an empty queue the next step
    // runs, and after the last step the loop is asked to quit with 7.
    int RunSteps(MessageLoop& loop, std::vector<std::function<void()>> steps)
    {
        std::size_t next = 0;
        platform::testing::SetQueueWaitHook([&] {
            if (next < steps.size())
                steps[next++]();
            else
                platform::PostQuit(7);
        });
        return loop.Run();
    }
};

bool NeverHandles(platform::WindowHandle, std::uint32_t, std::uintptr_t, std::intptr_t, std::intptr_t&)
{
    return false;
}

} // namespace

TEST_F(MessageLoopRun, OnePassForABurstOfMessages)
{
    CountingLoop loop;
    for (int i = 0; i < 10; ++i)
        platform::testing::PostToOwnQueue(platform::kMessageUser + i);
    EXPECT_EQ(RunSteps(loop, {}), 7);
    EXPECT_EQ(loop.counts, std::vector<int>{0});
}

TEST_F(MessageLoopRun, FirstPassRunsAtStartOnAnEmptyQueue)
{
    CountingLoop loop;
    EXPECT_EQ(RunSteps(loop, {}), 7);
    EXPECT_EQ(loop.counts, std::vector<int>{0});
}

TEST_F(MessageLoopRun, MouseMovesPaintsAndCaretTicksDoNotWakeTheIdlePass)
{
    CountingLoop loop;
    std::vector<std::size_t> passesSeen;
    RunSteps(loop, {
                       [&] {
                           passesSeen.push_back(loop.counts.size());
                           for (std::uint32_t id : {platform::kMessageMouseMove, platform::kMessagePaint,
                                                    platform::kMessageNcMouseMove, platform::kMessageCaretBlink})
                               platform::testing::PostToOwnQueue(id);
                       },
                       [&] {
                           passesSeen.push_back(loop.counts.size());
                           platform::testing::PostToOwnQueue(platform::kMessageTimer);
                       },
                       [&] { passesSeen.push_back(loop.counts.size()); },
                   });
    EXPECT_EQ(passesSeen, (std::vector<std::size_t>{1, 1, 2}));
}

TEST_F(MessageLoopRun, EveryOtherMessageWakesItOnceAndRestartsTheCount)
{
    const std::uint32_t waking[] = {platform::kMessageTimer,   platform::kMessageKeyDown,
                                    platform::kMessageCommand, platform::kMessageLeftButtonDown,
                                    platform::kMessageSize,    platform::kMessageUser};
    for (std::uint32_t id : waking) {
        SCOPED_TRACE(id);
        platform::testing::ResetStandIn();
        CountingLoop loop;
        RunSteps(loop, {[&] {
                     platform::testing::PostToOwnQueue(id);
                     platform::testing::PostToOwnQueue(id);
                 }});
        EXPECT_EQ(loop.counts, (std::vector<int>{0, 0}));
    }
}

TEST_F(MessageLoopRun, FailedWaitGoesOnWithoutAnExtraPass)
{
    CountingLoop loop;
    platform::testing::FailNextWaits(2);
    EXPECT_EQ(RunSteps(loop, {}), 7);
    EXPECT_EQ(loop.counts, std::vector<int>{0});
}

TEST_F(MessageLoopRun, TimerTicksBringOnePassEach)
{
    platform::WindowHandle window = platform::CreateDialogWindow(nullptr, 129, NeverHandles);
    ASSERT_NE(window, nullptr);
    ASSERT_TRUE(platform::StartTimer(window, 0, 250));
    CountingLoop loop;
    std::vector<std::uint64_t> times;
    platform::testing::SetQueueWaitHook([&] {
        times.push_back(platform::testing::CurrentTime());
        if (times.size() == 5)
            platform::PostQuit(2);
    });
    EXPECT_EQ(loop.Run(), 2);
    EXPECT_EQ(times, (std::vector<std::uint64_t>{0, 250, 500, 750, 1000}));
    EXPECT_EQ(loop.counts, (std::vector<int>{0, 0, 0, 0, 0}));
}

TEST_F(MessageLoopRun, QuitComesAfterThePostedMessages)
{
    CountingFilter filter;
    MessageLoop loop;
    loop.AddMessageFilter(&filter);
    platform::testing::PostToOwnQueue(platform::kMessageUser);
    platform::PostQuit(3);
    platform::testing::PostToOwnQueue(platform::kMessageUser);
    EXPECT_EQ(loop.Run(), 3);
    EXPECT_EQ(filter.seen, 2);
}
