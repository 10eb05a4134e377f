#include "loop/MessageLoop.h"
#include "loop/MessageLoopRegistry.h"
#include "platform/ThreadState.h"

#include <gtest/gtest.h>

#include <thread>

TEST(MessageLoopRegistry, OneEntryPerThreadFoundFromAnyThread)
{
    MessageLoopRegistry registry;
    MessageLoop mainLoop, workerLoop;
    const platform::ThreadId mainThread = platform::CurrentThreadId();
    ASSERT_TRUE(registry.Add(mainThread, &mainLoop));
    EXPECT_FALSE(registry.Add(mainThread, &workerLoop));

    platform::ThreadId workerThread = mainThread;
    MessageLoop* foundFromWorker = nullptr;
    MessageLoop* ownBeforeAdding = &mainLoop;
    bool removedBeforeAdding = true;
    std::thread worker([&] {
        workerThread = platform::CurrentThreadId();
        foundFromWorker = registry.Find(mainThread);
        ownBeforeAdding = registry.Find(workerThread);
        // Remove takes out the caller's entry only, and the worker has none.
        removedBeforeAdding = registry.Remove();
        registry.Add(workerThread, &workerLoop);
    });
    worker.join();
    EXPECT_NE(workerThread, mainThread);
    EXPECT_EQ(foundFromWorker, &mainLoop);
    EXPECT_EQ(ownBeforeAdding, nullptr);
    EXPECT_FALSE(removedBeforeAdding);
    EXPECT_EQ(registry.Find(workerThread), &workerLoop);

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
