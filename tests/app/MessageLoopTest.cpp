#include "loop/MessageLoop.h"
#include "platform/MessageQueue.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using platform::Message;

// Records in one shared journal when it runs, under its name.
class RecordingIdleHandler : public IdleHandler {
public:
    RecordingIdleHandler(std::vector<std::string>& journal, std::string name) : journal(journal), name(name) {}
    bool OnIdle() override
    {
        journal.push_back(name);
        return true;
    }

private:
    std::vector<std::string>& journal;
    std::string name;
};

class RecordingFilter : public MessageFilter {
public:
    RecordingFilter(std::vector<std::string>& journal, std::string name, bool usesUp)
        : journal(journal), name(name), usesUp(usesUp)
    {
    }
    bool PreTranslateMessage(Message&) override
    {
        journal.push_back(name);
        return usesUp;
    }

private:
    std::vector<std::string>& journal;
    std::string name;
    bool usesUp;
};

} // namespace

TEST(MessageLoopFilters, AskedFromTheLastRegisteredToTheFirst)
{
    std::vector<std::string> journal;
    RecordingFilter a(journal, "a", false), b(journal, "b", false), c(journal, "c", false);
    MessageLoop loop;
    Message message;
    EXPECT_FALSE(loop.PreTranslateMessage(message));
    loop.AddMessageFilter(&a);
    loop.AddMessageFilter(&b);
    loop.AddMessageFilter(&c);
    EXPECT_FALSE(loop.PreTranslateMessage(message));
    EXPECT_EQ(journal, (std::vector<std::string>{"c", "b", "a"}));
}

TEST(MessageLoopFilters, FirstThatUsesTheMessageUpEndsTheWalk)
{
    std::vector<std::string> journal;
    RecordingFilter a(journal, "a", false), b(journal, "b", true), c(journal, "c", false);
    MessageLoop loop;
    loop.AddMessageFilter(&a);
    loop.AddMessageFilter(&b);
    loop.AddMessageFilter(&c);
    Message message;
    EXPECT_TRUE(loop.PreTranslateMessage(message));
    EXPECT_EQ(journal, (std::vector<std::string>{"c", "b"}));
}

TEST(MessageLoopFilters, RemovingByPointerKeepsTheOrderOfTheOthers)
{
    std::vector<std::string> journal;
    RecordingFilter a(journal, "a", false), b(journal, "b", false), c(journal, "c", false),
        d(journal, "d", false);
    MessageLoop loop;
    for (RecordingFilter* filter : {&a, &b, &c, &d})
        loop.AddMessageFilter(filter);
    EXPECT_TRUE(loop.RemoveMessageFilter(&b));
    EXPECT_FALSE(loop.RemoveMessageFilter(&b));
    EXPECT_TRUE(loop.RemoveMessageFilter(&d));
    Message message;
    loop.PreTranslateMessage(message);
    EXPECT_EQ(journal, (std::vector<std::string>{"c", "a"}));
}

TEST(MessageLoopIdle, HandlersRunFirstToLastAndTheResultIsAlwaysFalse)
{
    std::vector<std::string> journal;
    RecordingIdleHandler a(journal, "a"), b(journal, "b"), c(journal, "c"), d(journal, "d");
    MessageLoop loop;
    EXPECT_FALSE(loop.OnIdle(0));
    for (RecordingIdleHandler* handler : {&a, &b, &c, &d})
        loop.AddIdleHandler(handler);
    EXPECT_TRUE(loop.RemoveIdleHandler(&c));
    EXPECT_FALSE(loop.RemoveIdleHandler(&c));
    EXPECT_FALSE(loop.OnIdle(3));
    EXPECT_EQ(journal, (std::vector<std::string>{"a", "b", "d"}));
}

TEST(MessageLoopIdle, FiltersAndHandlersAreSeparateLists)
{
    std::vector<std::string> journal;
    RecordingFilter filter(journal, "filter", false);
    RecordingIdleHandler handler(journal, "handler");
    MessageLoop loop;
    loop.AddMessageFilter(&filter);
    loop.AddIdleHandler(&handler);
    EXPECT_TRUE(loop.RemoveIdleHandler(&handler));
    loop.OnIdle(0);
    Message message;
    loop.PreTranslateMessage(message);
    EXPECT_EQ(journal, std::vector<std::string>{"filter"});
}

TEST(MessageLoopIdle, PaintsMouseMovesAndCaretTicksDoNotCount)
{
    for (std::uint32_t id : {0x000Fu, 0x00A0u, 0x0118u, 0x0200u}) {
        Message message;
        message.id = id;
        EXPECT_FALSE(MessageLoop::IsIdleMessage(message)) << id;
    }
    for (std::uint32_t id : {0x0001u, 0x0010u, 0x0100u, 0x0111u, 0x0113u, 0x0201u, 0x02A3u}) {
        Message message;
        message.id = id;
        EXPECT_TRUE(MessageLoop::IsIdleMessage(message)) << id;
    }
}
