#include "platform/Input.h"

#include "platform/win32/WinHandles.h"

#include <windows.h>

namespace platform {

bool GetCursorScreenPosition(std::int32_t& x, std::int32_t& y)
{
    POINT point{};
    if (!GetCursorPos(&point))
        return false;
    x = point.x;
    y = point.y;
    return true;
}

bool ScreenToClientPoint(WindowHandle window, std::int32_t& x, std::int32_t& y)
{
    POINT point{x, y};
    if (!ScreenToClient(win32::Hwnd(window), &point))
        return false;
    x = point.x;
    y = point.y;
    return true;
}

bool ClientToScreenPoint(WindowHandle window, std::int32_t& x, std::int32_t& y)
{
    POINT point{x, y};
    if (!ClientToScreen(win32::Hwnd(window), &point))
        return false;
    x = point.x;
    y = point.y;
    return true;
}

// The high bit of the key's state is set while it is down.
bool IsShiftKeyDown()
{
    return (GetAsyncKeyState(VK_SHIFT) & 0x8000) != 0;
}

bool IsControlKeyDown()
{
    return (GetAsyncKeyState(VK_CONTROL) & 0x8000) != 0;
}

WindowHandle GetCaptureWindow()
{
    return win32::Handle(GetCapture());
}

void CaptureMouse(WindowHandle window)
{
    SetCapture(win32::Hwnd(window));
}

void ReleaseMouseCapture()
{
    ReleaseCapture();
}

bool ActivateWindow(WindowHandle window)
{
    return SetActiveWindow(win32::Hwnd(window)) != nullptr;
}

WindowHandle GetKeyboardFocus()
{
    return win32::Handle(GetFocus());
}

void SetKeyboardFocus(WindowHandle window)
{
    SetFocus(win32::Hwnd(window));
}

} // namespace platform
