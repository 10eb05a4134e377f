#include "platform/RecursiveLock.h"

#include <windows.h>

namespace platform {

struct RecursiveLock::State {
    CRITICAL_SECTION section;
};

RecursiveLock::RecursiveLock() : state(new State)
{
    InitializeCriticalSection(&state->section);
}

RecursiveLock::~RecursiveLock()
{
    DeleteCriticalSection(&state->section);
}

void RecursiveLock::Enter()
{
    EnterCriticalSection(&state->section);
}

void RecursiveLock::Leave()
{
    LeaveCriticalSection(&state->section);
}

} // namespace platform
