#include "platform/ThreadState.h"

#include <atomic>

namespace platform {

namespace {

std::atomic<ThreadId> lastThreadId{0};
thread_local ThreadId threadId = 0;
thread_local std::uint32_t lastErrorCode = 0;

} // namespace

// Ids are handed out in the order in which threads first ask; they are not
// the kernel's.
ThreadId CurrentThreadId()
{
    if (threadId == 0)
        threadId = ++lastThreadId;
    return threadId;
}

void SetLastErrorCode(std::uint32_t code)
{
    lastErrorCode = code;
}

std::uint32_t GetLastErrorCode()
{
    return lastErrorCode;
}

} // namespace platform
