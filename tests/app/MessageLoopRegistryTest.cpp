#include "loop/MessageLoop.h"
#include "loop/MessageLoopRegistry.h"
#include "platform/ThreadState.h"

#include <gtest/gtest.h>

#include <thread>

TEST(MessageLoopRegistry, FindsTheLoopOfAThreadFromAnotherThread)
{
    MessageLoopRegistry registry;
    MessageLoop loop;
    platform::ThreadId mainThread = platform::CurrentThreadId();
    ASSERT_TRUE(registry.Add(mainThread, &loop));

    MessageLoop* foundFromWorker = nullptr;
    MessageLoop* ownOfWorker = &loop;
    bool workerRemoved = true;
    std::thread worker([&] {
        foundFromWorker = registry.Find(mainThread);
        ownOfWorker = registry.Find(platform::CurrentThreadId());
        // Remove takes out the caller's entry only, and the worker has none.
        workerRemoved = registry.Remove();
    });
    worker.join();

    EXPECT_EQ(foundFromWorker, &loop);
    EXPECT_EQ(ownOfWorker, nullptr);
    EXPECT_FALSE(workerRemoved);
    EXPECT_EQ(registry.Find(mainThread), &loop);
}

TEST(MessageLoopRegistry, EachThreadHasItsOwnEntry)
{
    MessageLoopRegistry registry;
    MessageLoop mainLoop, workerLoop;
    platform::ThreadId mainThread = platform::CurrentThreadId();
    platform::ThreadId workerThread = 0;
    ASSERT_TRUE(registry.Add(mainThread, &mainLoop));
    EXPECT_FALSE(registry.Add(mainThread, &workerLoop));

    std::thread worker([&] {
        workerThread = platform::CurrentThreadId();
        registry.Add(workerThread, &workerLoop);
    });
    worker.join();
    EXPECT_NE(workerThread, mainThread);
    EXPECT_EQ(registry.Find(workerThread), &workerLoop);
    EXPECT_EQ(registry.Find(mainThread), &mainLoop);

    EXPECT_TRUE(registry.Remove());
    EXPECT_FALSE(registry.Remove());
    EXPECT_EQ(registry.Find(mainThread), nullptr);
    EXPECT_EQ(registry.Find(workerThread), &workerLoop);
}

TEST(MessageLoopRegistry, ProcessRegistryFindsTheCallingThreadsLoop)
{
    EXPECT_EQ(MessageLoopRegistry::FindCurrentThreadLoop(), nullptr);
    MessageLoopRegistry registry;
    MessageLoop loop;
    MessageLoopRegistry::SetProcess(&registry);
    EXPECT_EQ(MessageLoopRegistry::FindCurrentThreadLoop(), nullptr);
    registry.Add(platform::CurrentThreadId(), &loop);
    EXPECT_EQ(MessageLoopRegistry::FindCurrentThreadLoop(), &loop);
    MessageLoop* fromWorker = &loop;
    std::thread worker([&] { fromWorker = MessageLoopRegistry::FindCurrentThreadLoop(); });
    worker.join();
    EXPECT_EQ(fromWorker, nullptr);
    MessageLoopRegistry::SetProcess(nullptr);
    EXPECT_EQ(MessageLoopRegistry::FindCurrentThreadLoop(), nullptr);
}
