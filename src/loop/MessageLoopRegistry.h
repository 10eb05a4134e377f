#pragma once

#include "base/Array.h"
#include "platform/RecursiveLock.h"
#include "platform/ThreadState.h"

class MessageLoop;

// Finds the MessageLoop of a thread. One per process, made by the entry
// function before the run function and destroyed after it; any thread may
// ask it, so each operation takes its lock. It owns no loop.
class MessageLoopRegistry {
public:
    MessageLoopRegistry() = default;
    MessageLoopRegistry(const MessageLoopRegistry&) = delete;
    MessageLoopRegistry& operator=(const MessageLoopRegistry&) = delete;

    // Operations, each under the lock
    bool Add(platform::ThreadId thread, MessageLoop* loop);
    MessageLoop* Find(platform::ThreadId thread);
    bool Remove();

    // The process's registry
    static MessageLoopRegistry* Process();
    static void SetProcess(MessageLoopRegistry* registry);
    // The loop of the calling thread in the process's registry, or null.
    static MessageLoop* FindCurrentThreadLoop();

private:
    platform::RecursiveLock lock;
    Array<platform::ThreadId> threadIds;
    Array<MessageLoop*> loops;
};
