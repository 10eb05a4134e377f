#include "platform/Thread.h"

#include <new>

#include <windows.h>

namespace platform {

namespace {

// What the thread needs at its start. The thread frees it, so a thread that
// is ended before it ran leaves it behind; only a failed resume does that.
struct StartBlock {
    ThreadStart start;
    void* parameter;
};

DWORD WINAPI ThreadEntry(LPVOID parameter)
{
    StartBlock* block = static_cast<StartBlock*>(parameter);
    const StartBlock copy = *block;
    delete block;
    return copy.start(copy.parameter);
}

HANDLE Native(ThreadHandle thread)
{
    return static_cast<HANDLE>(thread);
}

} // namespace

// Null when the system could not make the thread.
ThreadHandle CreateSuspendedThread(ThreadStart start, void* parameter)
{
    StartBlock* block = new (std::nothrow) StartBlock{start, parameter};
    if (!block)
        return nullptr;
    HANDLE thread = CreateThread(nullptr, 0, ThreadEntry, block, CREATE_SUSPENDED, nullptr);
    if (!thread) {
        delete block;
        return nullptr;
    }
    return static_cast<ThreadHandle>(thread);
}

bool SetThreadPriorityLevel(ThreadHandle thread, std::int32_t priority)
{
    return SetThreadPriority(Native(thread), priority) != FALSE;
}

// The suspend count before the call, or kThreadResumeFailed.
std::uint32_t ResumeSuspendedThread(ThreadHandle thread)
{
    return ResumeThread(Native(thread));
}

// kThreadStillActive while the thread runs.
bool GetThreadExitCode(ThreadHandle thread, std::uint32_t& exitCode)
{
    DWORD code = 0;
    if (!GetExitCodeThread(Native(thread), &code))
        return false;
    exitCode = code;
    return true;
}

bool TerminateThreadWithCode(ThreadHandle thread, std::uint32_t exitCode)
{
    return TerminateThread(Native(thread), exitCode) != FALSE;
}

void CloseThreadHandle(ThreadHandle thread)
{
    CloseHandle(Native(thread));
}

void SleepMilliseconds(std::uint32_t milliseconds)
{
    Sleep(milliseconds);
}

} // namespace platform
