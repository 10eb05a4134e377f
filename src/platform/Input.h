#pragma once

#include "platform/Window.h"

#include <cstdint>

// The mouse and the keyboard as the widgets see them: where the cursor is,
// whether Shift or Ctrl is held, which window has the mouse captured, which
// window is active and which has the keyboard. Called on the thread of the
// main window.
namespace platform {

// The cursor in screen pixels; false when it can't be had.
bool GetCursorScreenPosition(std::int32_t& x, std::int32_t& y);
// Turns a point in screen pixels into one of window's client area.
bool ScreenToClientPoint(WindowHandle window, std::int32_t& x, std::int32_t& y);
// And a point of window's client area into one of the screen.
bool ClientToScreenPoint(WindowHandle window, std::int32_t& x, std::int32_t& y);
// Whether a Shift key is down at this moment.
bool IsShiftKeyDown();
// Whether a Ctrl key is down at this moment.
bool IsControlKeyDown();

// The window of this thread that has the mouse captured, or null.
WindowHandle GetCaptureWindow();
// Sends all mouse input to window until the capture is released.
void CaptureMouse(WindowHandle window);
void ReleaseMouseCapture();

// Makes window the active window of this thread.
bool ActivateWindow(WindowHandle window);

// The window of this thread that keys go to, or null.
WindowHandle GetKeyboardFocus();
// Sends keys to window from now on. The window that had them hears of the
// loss first, then window of the gain.
void SetKeyboardFocus(WindowHandle window);

} // namespace platform
