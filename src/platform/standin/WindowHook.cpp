#include "platform/WindowHook.h"

#include "platform/standin/StandIn.h"

// A hooked window of the stand-in keeps its link itself; the one hook
// procedure takes it from there.
namespace platform {

using standin::State;

namespace {

bool IsKnownLocked(WindowHandle window)
{
    return State().windows.count(window) != 0;
}

std::intptr_t HookedProcedure(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
{
    const WindowHookLink* link = nullptr;
    {
        std::lock_guard lock(State().mutex);
        if (IsKnownLocked(window))
            link = window->hookLink;
    }
    if (link == nullptr || link->procedure == nullptr)
        return 0;
    return link->procedure(link->object, window, id, wParam, lParam);
}

std::intptr_t DefaultProcedure(WindowHandle, std::uint32_t, std::uintptr_t, std::intptr_t)
{
    return 0;
}

WindowProcedureObject hookProcedure{HookedProcedure};
WindowProcedureObject defaultProcedure{DefaultProcedure};

} // namespace

WindowProcedureHandle HookWindowProcedure(WindowHandle window, const WindowHookLink* link)
{
    std::lock_guard lock(State().mutex);
    if (!IsKnownLocked(window))
        return nullptr;
    WindowProcedureHandle previous =
        window->windowProcedure != nullptr ? window->windowProcedure : standin::DialogWindowProcedure();
    window->windowProcedure = &hookProcedure;
    window->hookLink = link;
    return previous;
}

bool UnhookWindowProcedure(WindowHandle window, WindowProcedureHandle procedure)
{
    std::lock_guard lock(State().mutex);
    if (!IsKnownLocked(window) || window->windowProcedure != &hookProcedure)
        return false;
    window->windowProcedure = procedure;
    window->hookLink = nullptr;
    return true;
}

std::intptr_t CallWindowProcedure(WindowProcedureHandle procedure, WindowHandle window, std::uint32_t message,
                                  std::uintptr_t wParam, std::intptr_t lParam)
{
    return procedure != nullptr ? procedure->call(window, message, wParam, lParam) : 0;
}

WindowProcedureHandle DefaultWindowProcedure()
{
    return &defaultProcedure;
}

} // namespace platform
