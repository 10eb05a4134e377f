#include "loop/MessageLoop.h"
#include "platform/MessageQueue.h"
#include "platform/standin/TestHooks.h"
#include "support/StandInTest.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using platform::Message;

// Writes its name into one shared journal whenever it is asked, as a filter
// or as an idle handler; as a filter it uses the message up when told to.
class Recorder : public MessageFilter, public IdleHandler {
public:
    Recorder(std::vector<std::string>& journal, std::string name, bool usesUp = false)
        : journal(journal), name(std::move(name)), usesUp(usesUp)
    {
    }
    bool PreTranslateMessage(Message&) override
    {
        journal.push_back(name);
        return usesUp;
    }
    bool OnIdle() override
    {
        journal.push_back(name);
        return true;
    }

private:
    std::vector<std::string>& journal;
    std::string name;
    bool usesUp;
};

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

class MessageLoopRun : public StandInTest {
protected:
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

// Filters are asked from the last to the first until one uses the message
// up; idle handlers run from the first to the last, apart from the filters.
TEST(MessageLoopLists, FiltersFromTheLastAndIdleHandlersFromTheFirst)
{
    std::vector<std::string> journal;
    Recorder a(journal, "a"), b(journal, "b", true), c(journal, "c"), d(journal, "d");
    MessageLoop loop;
    Message message;
    EXPECT_FALSE(loop.PreTranslateMessage(message));
    for (Recorder* filter : {&a, &b, &c, &d})
        loop.AddMessageFilter(filter);
    EXPECT_TRUE(loop.PreTranslateMessage(message));
    EXPECT_EQ(journal, (std::vector<std::string>{"d", "c", "b"}));

    // Removal goes by pointer, once, and keeps the order of the others.
    journal.clear();
    EXPECT_TRUE(loop.RemoveMessageFilter(&b));
    EXPECT_FALSE(loop.RemoveMessageFilter(&b));
    EXPECT_TRUE(loop.RemoveMessageFilter(&d));
    EXPECT_FALSE(loop.PreTranslateMessage(message));
    EXPECT_EQ(journal, (std::vector<std::string>{"c", "a"}));

    journal.clear();
    MessageLoop idle;
    EXPECT_FALSE(idle.OnIdle(0));
    idle.AddMessageFilter(&d);
    for (Recorder* handler : {&a, &b, &c})
        idle.AddIdleHandler(handler);
    EXPECT_TRUE(idle.RemoveIdleHandler(&b));
    EXPECT_FALSE(idle.RemoveIdleHandler(&b));
    EXPECT_FALSE(idle.RemoveIdleHandler(&d));
    // Whatever the handlers give, the pass asks for no second one.
    EXPECT_FALSE(idle.OnIdle(3));
    EXPECT_EQ(journal, (std::vector<std::string>{"a", "c"}));
}

// The idle rule: one pass at the start and one after each burst of messages
// that count, each pass counted from 0 again. Mouse moves, paints and caret
// ticks come all the time and bring none; nor does a wait that failed.
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

    CountingLoop failing;
    platform::testing::FailNextWaits(2);
    EXPECT_EQ(RunSteps(failing, {}), 7);
    EXPECT_EQ(failing.counts, std::vector<int>{0});
}
