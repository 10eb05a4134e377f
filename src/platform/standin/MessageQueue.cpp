#include "platform/MessageQueue.h"

#include "platform/standin/StandIn.h"

#include <algorithm>

namespace platform {

using standin::State;

namespace {

// The timer of the calling thread that is due first, if any is due.
standin::Timer* DueTimerLocked(ThreadId thread)
{
    standin::StandIn& state = State();
    standin::Timer* due = nullptr;
    for (standin::Timer& timer : state.timers)
        if (timer.window->owner == thread && timer.due <= state.now && (due == nullptr || timer.due < due->due))
            due = &timer;
    return due;
}

standin::Timer* NextTimerLocked(ThreadId thread)
{
    standin::Timer* next = nullptr;
    for (standin::Timer& timer : State().timers)
        if (timer.window->owner == thread && (next == nullptr || timer.due < next->due))
            next = &timer;
    return next;
}

Message TimerMessage(const standin::Timer& timer)
{
    Message message;
    message.window = timer.window;
    message.id = kMessageTimer;
    message.wParam = timer.id;
    message.time = static_cast<std::uint32_t>(State().now);
    return message;
}

Message QuitMessage(int exitCode)
{
    Message message;
    message.id = kMessageQuit;
    message.wParam = static_cast<std::uintptr_t>(exitCode);
    message.time = static_cast<std::uint32_t>(State().now);
    return message;
}

} // namespace

// The order is the system's: posted messages first, then the quit request,
// then timers.
bool PumpPeekMessage(Message& message)
{
    standin::StandIn& state = State();
    std::lock_guard lock(state.mutex);
    ThreadId thread = CurrentThreadId();
    standin::ThreadQueue& queue = state.queues[thread];
    if (!queue.posted.empty()) {
        message = queue.posted.front();
        return true;
    }
    if (queue.quitPosted) {
        message = QuitMessage(queue.quitCode);
        return true;
    }
    if (standin::Timer* timer = DueTimerLocked(thread)) {
        message = TimerMessage(*timer);
        return true;
    }
    return false;
}

// With nothing queued the wait hook of the tests runs first and may post;
// after it the clock jumps to the next timer of the thread. Without a timer
// the hook runs again for as long as nothing comes, and without a hook the
// thread sleeps until another thread posts.
int WaitForMessage(Message& message)
{
    standin::StandIn& state = State();
    std::unique_lock lock(state.mutex);
    ThreadId thread = CurrentThreadId();
    standin::ThreadQueue& queue = state.queues[thread];
    if (queue.failingWaits > 0) {
        --queue.failingWaits;
        return -1;
    }
    bool hookRan = false;
    for (;;) {
        if (!queue.posted.empty()) {
            message = queue.posted.front();
            queue.posted.pop_front();
            return message.id == kMessageQuit ? 0 : 1;
        }
        if (queue.quitPosted) {
            queue.quitPosted = false;
            message = QuitMessage(queue.quitCode);
            return 0;
        }
        if (standin::Timer* timer = DueTimerLocked(thread)) {
            message = TimerMessage(*timer);
            timer->due = state.now + timer->period;
            return 1;
        }
        standin::Timer* next = NextTimerLocked(thread);
        if (state.waitHook && (!hookRan || next == nullptr)) {
            hookRan = true;
            std::function<void()> hook = state.waitHook;
            lock.unlock();
            hook();
            lock.lock();
            continue;
        }
        if (next != nullptr) {
            state.now = std::max(state.now, next->due);
            continue;
        }
        state.posted.wait(lock);
    }
}

// Nothing to translate: the stand-in has no keyboard layout, and its tests
// post the character messages they need.
void TranslateKeyMessage(const Message&) {}

std::intptr_t DeliverMessage(const Message& message)
{
    if (message.window == nullptr)
        return 0;
    return standin::CallProcedure(message.window, message.id, message.wParam, message.lParam);
}

bool PreprocessDialogMessage(WindowHandle dialog, const Message& message)
{
    if (dialog == nullptr || message.window != dialog || !IsLiveWindow(dialog))
        return false;
    if (message.id == kMessageKeyDown && message.wParam == kKeyEscape) {
        standin::CallProcedure(dialog, kMessageCommand, 2, 0);
        return true;
    }
    // The dialog has no controls to move between, so the keys of navigation
    // are used up without effect, as on Windows.
    bool navigation = (message.id == kMessageKeyDown || message.id == kMessageChar) &&
                      (message.wParam == kKeyTab || message.wParam == kKeyReturn || message.wParam == kKeyEscape);
    if (!navigation)
        DeliverMessage(message);
    return true;
}

void PostQuit(int exitCode)
{
    standin::StandIn& state = State();
    std::lock_guard lock(state.mutex);
    standin::ThreadQueue& queue = state.queues[CurrentThreadId()];
    queue.quitPosted = true;
    queue.quitCode = exitCode;
    state.posted.notify_all();
}

bool PostToWindow(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
{
    if (window == nullptr)
        return false;
    std::lock_guard lock(State().mutex);
    return standin::PostLocked(window, id, wParam, lParam);
}

std::intptr_t SendToWindow(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
{
    return standin::CallProcedure(window, id, wParam, lParam);
}

} // namespace platform
