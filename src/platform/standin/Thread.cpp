#include "platform/Thread.h"

#include "platform/standin/TestHooks.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <new>
#include <thread>

#include <pthread.h>
#include <sched.h>

// A POSIX thread is started only when the handle is resumed, and it runs
// detached: the handle and the running thread each hold the object, and the
// last of them to let go frees it.
struct platform::ThreadObject {
    enum class State { Suspended, Running, Ended };

    std::mutex mutex;
    ThreadStart start = nullptr;
    void* parameter = nullptr;
    std::int32_t priority = 0;
    State state = State::Suspended;
    std::uint32_t exitCode = kThreadStillActive;
    int holders = 1;
};

namespace platform {

namespace {

std::atomic<bool> failNextResume{false};

void LetGo(ThreadObject* thread)
{
    bool last = false;
    {
        std::lock_guard<std::mutex> guard(thread->mutex);
        last = --thread->holders == 0;
    }
    if (last)
        delete thread;
}

// Only the idle level has a twin here. Lowering may be refused, and the
// thread then runs at the normal level.
void TakePriority(std::int32_t priority)
{
#if defined(SCHED_IDLE)
    if (priority <= kThreadPriorityIdle) {
        sched_param parameters{};
        pthread_setschedparam(pthread_self(), SCHED_IDLE, &parameters);
    }
#else
    (void)priority;
#endif
}

void* RunThread(void* argument)
{
    ThreadObject* thread = static_cast<ThreadObject*>(argument);
    TakePriority(thread->priority);
    const std::uint32_t exitCode = thread->start(thread->parameter);
    {
        std::lock_guard<std::mutex> guard(thread->mutex);
        thread->state = ThreadObject::State::Ended;
        thread->exitCode = exitCode;
    }
    LetGo(thread);
    return nullptr;
}

} // namespace

ThreadHandle CreateSuspendedThread(ThreadStart start, void* parameter)
{
    ThreadObject* thread = new (std::nothrow) ThreadObject;
    if (!thread)
        return nullptr;
    thread->start = start;
    thread->parameter = parameter;
    return thread;
}

// The level is taken when the thread starts; a running thread keeps its own.
bool SetThreadPriorityLevel(ThreadHandle thread, std::int32_t priority)
{
    std::lock_guard<std::mutex> guard(thread->mutex);
    thread->priority = priority;
    return true;
}

// Starts the thread: 1 for a suspended one, 0 for one that was started
// before, kThreadResumeFailed when no thread could be started.
std::uint32_t ResumeSuspendedThread(ThreadHandle thread)
{
    std::lock_guard<std::mutex> guard(thread->mutex);
    if (thread->state != ThreadObject::State::Suspended)
        return 0;
    if (failNextResume.exchange(false))
        return kThreadResumeFailed;

    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return kThreadResumeFailed;
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t id;
    ++thread->holders;
    const int error = pthread_create(&id, &attributes, RunThread, thread);
    pthread_attr_destroy(&attributes);
    if (error != 0) {
        --thread->holders;
        return kThreadResumeFailed;
    }
    thread->state = ThreadObject::State::Running;
    return 1;
}

bool GetThreadExitCode(ThreadHandle thread, std::uint32_t& exitCode)
{
    std::lock_guard<std::mutex> guard(thread->mutex);
    exitCode = thread->exitCode;
    return true;
}

// A thread that never ran is ended at once. A running one cannot be ended
// from outside here; that gives false and the thread runs on.
bool TerminateThreadWithCode(ThreadHandle thread, std::uint32_t exitCode)
{
    std::lock_guard<std::mutex> guard(thread->mutex);
    if (thread->state == ThreadObject::State::Running)
        return false;
    if (thread->state == ThreadObject::State::Suspended) {
        thread->state = ThreadObject::State::Ended;
        thread->exitCode = exitCode;
    }
    return true;
}

void CloseThreadHandle(ThreadHandle thread)
{
    LetGo(thread);
}

void SleepMilliseconds(std::uint32_t milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

namespace testing {

void FailNextThreadResume()
{
    failNextResume = true;
}

} // namespace testing

} // namespace platform
