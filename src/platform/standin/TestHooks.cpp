#include "platform/standin/TestHooks.h"

#include "platform/standin/StandIn.h"

namespace platform::testing {

using standin::State;

void ResetStandIn()
{
    standin::StandIn& state = State();
    std::lock_guard lock(state.mutex);
    for (WindowHandle window : state.windows)
        delete window;
    state.windows.clear();
    state.queues.clear();
    state.timers.clear();
    state.now = 0;
    state.workArea = standin::kDefaultWorkArea;
    state.failingDialogCreations = 0;
    state.waitHook = nullptr;
    state.calls.clear();
    state.comInitializations = 0;
    state.gdiplusSessions = 0;
    state.cursorX = 0;
    state.cursorY = 0;
    state.shiftDown = false;
    state.controlDown = false;
    state.capture = nullptr;
    state.focus = nullptr;
    for (MenuHandle menu : state.menus)
        delete menu;
    state.menus.clear();
    state.menuChoice = 0;
    state.trackedMenu.clear();
    standin::ResetSystemSettings();
    standin::ResetShell();
    standin::ResetFonts();
    standin::ResetVersions();
    standin::Desktop()->inputEnabled = true;
}

void SetQueueWaitHook(std::function<void()> hook)
{
    std::lock_guard lock(State().mutex);
    State().waitHook = std::move(hook);
}

void PostToOwnQueue(std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
{
    std::lock_guard lock(State().mutex);
    standin::PostLocked(nullptr, id, wParam, lParam);
}

void FailNextWaits(int count)
{
    std::lock_guard lock(State().mutex);
    State().queues[CurrentThreadId()].failingWaits = count;
}

void FailNextDialogCreation()
{
    std::lock_guard lock(State().mutex);
    ++State().failingDialogCreations;
}

void SetWorkArea(PixelRect area)
{
    std::lock_guard lock(State().mutex);
    State().workArea = area;
}

std::vector<WindowHandle> LiveWindows()
{
    std::lock_guard lock(State().mutex);
    return {State().windows.begin(), State().windows.end()};
}

WindowHandle FindWindowByCaption(std::u16string_view caption)
{
    std::lock_guard lock(State().mutex);
    for (WindowHandle window : State().windows)
        if (window->caption == caption)
            return window;
    return nullptr;
}

bool DescribeWindow(WindowHandle window, WindowRecord& record)
{
    standin::StandIn& state = State();
    std::lock_guard lock(state.mutex);
    if (state.windows.count(window) == 0)
        return false;
    record.bounds = window->bounds;
    record.shown = window->shown;
    record.lastShowCommand = window->lastShowCommand;
    record.acceptsDrops = window->acceptsDrops;
    record.timers.clear();
    for (const standin::Timer& timer : state.timers)
        if (timer.window == window)
            record.timers.emplace_back(timer.id, timer.period);
    return true;
}

std::vector<std::string> TakeCallLog()
{
    std::lock_guard lock(State().mutex);
    std::vector<std::string> calls = std::move(State().calls);
    State().calls.clear();
    return calls;
}

int OpenComInitializations()
{
    std::lock_guard lock(State().mutex);
    return State().comInitializations;
}

int OpenGdiplusSessions()
{
    std::lock_guard lock(State().mutex);
    return State().gdiplusSessions;
}

} // namespace platform::testing
