#include "platform/standin/StandIn.h"

#include "platform/Input.h"

#include <algorithm>

namespace platform::standin {

StandIn& State()
{
    static StandIn state;
    return state;
}

void RecordCall(std::string call)
{
    StandIn& state = State();
    std::lock_guard lock(state.mutex);
    state.calls.push_back(std::move(call));
}

namespace {

bool IsLiveLocked(WindowHandle window)
{
    return State().windows.count(window) != 0;
}

std::intptr_t CallDialogProcedure(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
{
    StandIn& state = State();
    DialogProcedure procedure = nullptr;
    {
        std::lock_guard lock(state.mutex);
        if (!IsLiveLocked(window))
            return 0;
        procedure = window->procedure;
    }
    std::intptr_t result = 0;
    if (procedure != nullptr && procedure(window, id, wParam, lParam, result))
        return result;
    // The default dialog processing: the close box and the window menu's
    // close entry come as the cancel command, id 2, posted like a click.
    if (id == kMessageClose) {
        std::lock_guard lock(state.mutex);
        if (IsLiveLocked(window))
            PostLocked(window, kMessageCommand, 2, 0);
    }
    return 0;
}

} // namespace

WindowProcedureHandle DialogWindowProcedure()
{
    static WindowProcedureObject procedure{CallDialogProcedure};
    return &procedure;
}

std::intptr_t CallProcedure(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
{
    WindowProcedureHandle procedure = nullptr;
    {
        std::lock_guard lock(State().mutex);
        if (!IsLiveLocked(window))
            return 0;
        procedure = window->windowProcedure != nullptr ? window->windowProcedure : DialogWindowProcedure();
    }
    return procedure->call(window, id, wParam, lParam);
}

// As on Windows, the window is hidden first, and the keyboard goes to its
// parent when it was in the window; then the window hears of its end
// before its children do, and they are gone before it hears the very last
// message.
void DestroyWindowTree(WindowHandle window)
{
    StandIn& state = State();
    bool hadFocus = false;
    {
        std::lock_guard lock(state.mutex);
        if (!IsLiveLocked(window))
            return;
        window->shown = false;
        for (WindowHandle inside = state.focus; inside != nullptr; inside = inside->parent)
            hadFocus |= inside == window;
    }
    if (hadFocus)
        SetKeyboardFocus(window->parent);
    CallProcedure(window, kMessageDestroy, 0, 0);
    std::vector<WindowHandle> children;
    {
        std::lock_guard lock(state.mutex);
        for (WindowHandle child : state.windows)
            if (child->parent == window)
                children.push_back(child);
    }
    for (WindowHandle child : children)
        DestroyWindowTree(child);
    CallProcedure(window, kMessageNcDestroy, 0, 0);

    std::lock_guard lock(state.mutex);
    if (!IsLiveLocked(window))
        return;
    state.windows.erase(window);
    if (state.capture == window)
        state.capture = nullptr;
    if (state.focus == window)
        state.focus = nullptr;
    std::erase_if(state.timers, [window](const Timer& timer) { return timer.window == window; });
    // Messages still queued for the window go with it, so that a later
    // window at the same address never receives them.
    for (auto& [thread, queue] : state.queues)
        std::erase_if(queue.posted, [window](const Message& message) { return message.window == window; });
    delete window;
}

bool PostLocked(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
{
    StandIn& state = State();
    ThreadId thread = CurrentThreadId();
    if (window != nullptr) {
        if (!IsLiveLocked(window))
            return false;
        thread = window->owner;
    }
    Message message;
    message.window = window;
    message.id = id;
    message.wParam = wParam;
    message.lParam = lParam;
    message.time = static_cast<std::uint32_t>(state.now);
    state.queues[thread].posted.push_back(message);
    state.posted.notify_all();
    return true;
}

} // namespace platform::standin
