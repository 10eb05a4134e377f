#include "platform/Input.h"

#include "platform/standin/StandIn.h"
#include "platform/standin/TestHooks.h"

#include <mutex>

// The stand-in's mouse sits where tests put it, its Shift key is up unless
// a test holds it down, and one capture serves the whole process.
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

bool IsShiftKeyDown()
{
    standin::StandIn& state = standin::State();
    std::lock_guard lock(state.mutex);
    return state.shiftDown;
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

} // namespace platform
