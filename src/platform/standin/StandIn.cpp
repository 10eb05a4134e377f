#include "platform/standin/StandIn.h"

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

} // namespace

std::intptr_t CallProcedure(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
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
