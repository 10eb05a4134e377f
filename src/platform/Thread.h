#pragma once

#include <cstdint>

// Threads of the system by handle. A thread is made suspended and runs once
// it is resumed. Its handle stays valid until it is closed, also after the
// thread has ended, and closing it does not end the thread.
namespace platform {

struct ThreadObject;
using ThreadHandle = ThreadObject*;

// What a thread runs, given the parameter it was made with; the result is
// the thread's exit code.
using ThreadStart = std::uint32_t (*)(void* parameter);

// The priority of a thread that runs only when nothing else wants the
// processor.
constexpr std::int32_t kThreadPriorityIdle = -15;
// What ResumeSuspendedThread gives when it fails.
constexpr std::uint32_t kThreadResumeFailed = 0xFFFFFFFF;
// The exit code of a thread that has not ended.
constexpr std::uint32_t kThreadStillActive = 259;

ThreadHandle CreateSuspendedThread(ThreadStart start, void* parameter);
bool SetThreadPriorityLevel(ThreadHandle thread, std::int32_t priority);
std::uint32_t ResumeSuspendedThread(ThreadHandle thread);
bool GetThreadExitCode(ThreadHandle thread, std::uint32_t& exitCode);
bool TerminateThreadWithCode(ThreadHandle thread, std::uint32_t exitCode);
void CloseThreadHandle(ThreadHandle thread);

// Gives up the processor for at least this long.
void SleepMilliseconds(std::uint32_t milliseconds);

} // namespace platform
