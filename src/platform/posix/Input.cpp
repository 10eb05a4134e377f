#include "platform/Input.h"

#include "platform/posix/StandIn.h"
#include "platform/posix/TestHooks.h"

#include <mutex>

// The stand-in's mouse sits where tests put it, its Shift key is up unless
// a test holds it down, and one capture serves the whole process.
namespace platform {

bool GetCursorScreenPosition(std::int32_t& x, std::int32_t& y)
{
    posix::StandIn& state = posix::State();
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
    posix::StandIn& state = posix::State();
    std::lock_guard lock(state.mutex);
    return state.shiftDown;
}

WindowHandle GetCaptureWindow()
{
    posix::StandIn& state = posix::State();
    std::lock_guard lock(state.mutex);
    return state.capture;
}

void CaptureMouse(WindowHandle window)
{
    if (!IsLiveWindow(window))
        return;
    {
        posix::StandIn& state = posix::State();
        std::lock_guard lock(state.mutex);
        state.capture = window;
    }
    posix::RecordCall("CaptureMouse");
}

void ReleaseMouseCapture()
{
    {
        posix::StandIn& state = posix::State();
        std::lock_guard lock(state.mutex);
        state.capture = nullptr;
    }
    posix::RecordCall("ReleaseMouseCapture");
}

bool ActivateWindow(WindowHandle window)
{
    if (!IsLiveWindow(window))
        return false;
    posix::RecordCall("ActivateWindow");
    return true;
}

void testing::SetCursorScreenPosition(std::int32_t x, std::int32_t y)
{
    posix::StandIn& state = posix::State();
    std::lock_guard lock(state.mutex);
    state.cursorX = x;
    state.cursorY = y;
}

void testing::SetShiftKeyDown(bool down)
{
    posix::StandIn& state = posix::State();
    std::lock_guard lock(state.mutex);
    state.shiftDown = down;
}

} // namespace platform
