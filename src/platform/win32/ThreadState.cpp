#include "platform/ThreadState.h"

#include <windows.h>

namespace platform {

ThreadId CurrentThreadId()
{
    return GetCurrentThreadId();
}

void SetLastErrorCode(std::uint32_t code)
{
    SetLastError(code);
}

std::uint32_t GetLastErrorCode()
{
    return GetLastError();
}

} // namespace platform
