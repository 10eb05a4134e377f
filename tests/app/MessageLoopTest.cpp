#include "loop/MessageLoop.h"
#include "platform/MessageQueue.h"

#include <gtest/gtest.h>

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

} // namespace

TEST(MessageLoopFilters, AskedFromTheLastToTheFirstUntilOneUsesTheMessageUp)
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
}

TEST(MessageLoopIdle, HandlersRunFirstToLastApartFromTheFilters)
{
    std::vector<std::string> journal;
    Recorder a(journal, "a"), b(journal, "b"), c(journal, "c"), filter(journal, "filter");
    MessageLoop loop;
    EXPECT_FALSE(loop.OnIdle(0));
    loop.AddMessageFilter(&filter);
    for (Recorder* handler : {&a, &b, &c})
        loop.AddIdleHandler(handler);
    EXPECT_TRUE(loop.RemoveIdleHandler(&b));
    EXPECT_FALSE(loop.RemoveIdleHandler(&b));
    EXPECT_FALSE(loop.RemoveIdleHandler(&filter));
    // Whatever the handlers give, the pass asks for no second one.
    EXPECT_FALSE(loop.OnIdle(3));
    EXPECT_EQ(journal, (std::vector<std::string>{"a", "c"}));
}
