#include "loop/MessageLoop.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

// A loop that keeps the counts its idle passes were given.
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

} // namespace

// The idle rule: one pass at the start and one after each burst of messages
// that count, each pass counted from 0 again. Mouse moves, paints and caret
// ticks come all the time and bring none.
TEST_F(MessageLoopRun, OnePassPerBurstOfMessagesThatCount)
{
    namespace p = platform;
    const std::vector<std::uint32_t> bursts[] = {
        {p::kMessageMouseMove, p::kMessagePaint, p::kMessageNcMouseMove, p::kMessageCaretBlink},
        {p::kMessageTimer, p::kMessageTimer},
        {p::kMessageKeyDown},
        {p::kMessageCommand},
        {p::kMessageLeftButtonDown, p::kMessageMouseMove},
        {p::kMessageSize},
        std::vector<std::uint32_t>(10, p::kMessageUser),
    };
    CountingLoop loop;
    std::vector<std::function<void()>> steps;
    for (const std::vector<std::uint32_t>& burst : bursts) {
        steps.push_back([&burst] {
            for (std::uint32_t id : burst)
                platform::testing::PostToOwnQueue(id);
        });
    }
    EXPECT_EQ(RunSteps(loop, steps), 7);
    EXPECT_EQ(loop.counts, std::vector<int>(7, 0));
}

TEST_F(MessageLoopRun, FailedWaitGoesOnWithoutAnExtraPass)
{
    CountingLoop loop;
    platform::testing::FailNextWaits(2);
    EXPECT_EQ(RunSteps(loop, {}), 7);
    EXPECT_EQ(loop.counts, std::vector<int>{0});
}
