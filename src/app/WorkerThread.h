#pragma once

#include "platform/RecursiveLock.h"
#include "platform/Thread.h"

#include <atomic>
#include <cstdint>

// Runs one member function of one object once, on a thread of its own at
// idle priority, and tells whether that thread is still alive. Made with new
// on the main thread by its user and disposed of by StopAndDestroy alone;
// the thread touches the object last when it clears the handle at its end.
// The thread function is the one place that catches failures: it shows
// them in a box on the worker thread.
class WorkerThread {
public:
    // Starts the thread at once.
    template <typename Target>
    WorkerThread(Target* target, void (Target::*method)(WorkerThread*))
        : WorkerThread(static_cast<void*>(target), reinterpret_cast<ErasedMethod>(method), &Call<Target>)
    {
    }
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    // Thread state
    bool IsRunning() const;
    void Kill();
    void StopAndDestroy();
    // For the running function: whether StopAndDestroy is waiting for it.
    bool IsStopRequested() const { return stopRequested.load() != 0; }

private:
    // Any class stands in for the target's own in the stored member
    // function; Call converts it back before the call, which the language
    // allows for a round trip between member function types.
    class AnyTarget {};
    using ErasedMethod = void (AnyTarget::*)(WorkerThread*);
    using Caller = void (*)(void* target, ErasedMethod method, WorkerThread* worker);

    template <typename Target>
    static void Call(void* target, ErasedMethod method, WorkerThread* worker)
    {
        using Method = void (Target::*)(WorkerThread*);
        (static_cast<Target*>(target)->*reinterpret_cast<Method>(method))(worker);
    }

    WorkerThread(void* target, ErasedMethod method, Caller caller);
    ~WorkerThread() = default;

    static std::uint32_t ThreadMain(void* parameter);
    void ForgetThread();

    void* target;
    platform::ThreadHandle thread = nullptr;
    ErasedMethod method;
    Caller caller;
    mutable platform::RecursiveLock lock;
    std::atomic<std::uint32_t> stopRequested{0};
};
