#include "loop/MessageLoopRegistry.h"

#include <atomic>

namespace {

std::atomic<MessageLoopRegistry*> processRegistry{nullptr};

} // namespace

// A thread has at most one loop: false, and no change, when it has one.
bool MessageLoopRegistry::Add(platform::ThreadId thread, MessageLoop* loop)
{
    platform::LockGuard guard(lock);
    for (platform::ThreadId known : threadIds)
        if (known == thread)
            return false;
    threadIds.Add(thread);
    loops.Add(loop);
    return true;
}

// The loop of thread, or null when it has none.
MessageLoop* MessageLoopRegistry::Find(platform::ThreadId thread)
{
    platform::LockGuard guard(lock);
    for (std::size_t i = 0; i < threadIds.Count(); ++i)
        if (threadIds.At(i) == thread)
            return loops.At(i);
    return nullptr;
}

// Takes out the entry of the calling thread; false when it has none.
bool MessageLoopRegistry::Remove()
{
    platform::ThreadId thread = platform::CurrentThreadId();
    platform::LockGuard guard(lock);
    for (std::size_t i = 0; i < threadIds.Count(); ++i) {
        if (threadIds.At(i) == thread) {
            threadIds.RemoveAt(i);
            loops.RemoveAt(i);
            return true;
        }
    }
    return false;
}

// Null before the entry function has made it and after it is gone.
MessageLoopRegistry* MessageLoopRegistry::Process()
{
    return processRegistry.load();
}

void MessageLoopRegistry::SetProcess(MessageLoopRegistry* registry)
{
    processRegistry.store(registry);
}

MessageLoop* MessageLoopRegistry::FindCurrentThreadLoop()
{
    MessageLoopRegistry* registry = Process();
    return registry != nullptr ? registry->Find(platform::CurrentThreadId()) : nullptr;
}
