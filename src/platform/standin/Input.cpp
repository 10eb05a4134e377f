#include "platform/Input.h"

#include "platform/standin/StandIn.h"
#include "platform/standin/TestHooks.h"

#include <mutex>

// The stand-in's mouse sits where tests put it, its Shift and Ctrl keys are
// up unless a test holds them down, and one capture and one keyboard focus
// serve the whole process.
namespace platform {

bool GetCursorScreenPosition(std::int32_t& x, std::int32_t& y)
{
    standin::StandIn& state = standin::State();
    std::lock_guard lock(state.mutex);
    x = state.cursorX;
    y = state.cursorY;
    return true;
}

// The client area begins inside the frame and below the caption.
bool ScreenToClientPoint(WindowHandle window, std::int32_t& x, std::int32_t& y)
{
    if (!IsLiveWindow(window))
        return false;
    const PixelRect client = GetClientBounds(window);
    x -= client.left;
    y -= client.top;
    return true;
}

bool ClientToScreenPoint(WindowHandle window, std::int32_t& x, std::int32_t& y)
{
    if (!IsLiveWindow(window))
        return false;
    const PixelRect client = GetClientBounds(window);
    x += client.left;
    y += client.top;
    return true;
}

bool IsShiftKeyDown()
{
    standin::StandIn& state = standin::State();
    std::lock_guard lock(state.mutex);
    return state.shiftDown;
}

bool IsControlKeyDown()
{
    standin::StandIn& state = standin::State();
    std::lock_guard lock(state.mutex);
    return state.controlDown;
}

WindowHandle GetCaptureWindow()
{
    standin::StandIn& state = standin::State();
    std::lock_guard lock(state.mutex);
    return state.capture;
}

void CaptureMouse(WindowHandle window)
{
    if (!IsLiveWindow(window))
        return;
    {
        standin::StandIn& state = standin::State();
        std::lock_guard lock(state.mutex);
        state.capture = window;
    }
    standin::RecordCall("CaptureMouse");
}

void ReleaseMouseCapture()
{
    {
        standin::StandIn& state = standin::State();
        std::lock_guard lock(state.mutex);
        state.capture = nullptr;
    }
    standin::RecordCall("ReleaseMouseCapture");
}

bool ActivateWindow(WindowHandle window)
{
    if (!IsLiveWindow(window))
        return false;
    standin::RecordCall("ActivateWindow");
    return true;
}

WindowHandle GetKeyboardFocus()
{
    standin::StandIn& state = standin::State();
    std::lock_guard lock(state.mutex);
    return state.focus;
}

// A window that takes the focus back while it hears of its loss keeps it,
// and the window that was to get it hears nothing.
void SetKeyboardFocus(WindowHandle window)
{
    standin::StandIn& state = standin::State();
    WindowHandle previous = nullptr;
    {
        std::lock_guard lock(state.mutex);
        if (window != nullptr && state.windows.count(window) == 0)
            return;
        previous = state.focus;
        if (previous == window)
            return;
        state.focus = window;
    }
    if (previous != nullptr)
        standin::CallProcedure(previous, kMessageKillFocus, reinterpret_cast<std::uintptr_t>(window), 0);
    {
        std::lock_guard lock(state.mutex);
        if (window == nullptr || state.focus != window)
            return;
    }
    standin::CallProcedure(window, kMessageSetFocus, reinterpret_cast<std::uintptr_t>(previous), 0);
}

void testing::SetCursorScreenPosition(std::int32_t x, std::int32_t y)
{
    standin::StandIn& state = standin::State();
    std::lock_guard lock(state.mutex);
    state.cursorX = x;
    state.cursorY = y;
}

void testing::SetShiftKeyDown(bool down)
{
    standin::StandIn& state = standin::State();
    std::lock_guard lock(state.mutex);
    state.shiftDown = down;
}

void testing::SetControlKeyDown(bool down)
{
    standin::StandIn& state = standin::State();
    std::lock_guard lock(state.mutex);
    state.controlDown = down;
}

} // namespace platform
