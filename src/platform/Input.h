#pragma once

#include "platform/Window.h"

#include <cstdint>

// The mouse and the keyboard as the widgets see them: where the cursor is,
// whether Shift is held, which window has the mouse captured, and which
// window is active. Called on the thread of the main window.
namespace platform {

// The cursor in screen pixels; false when it can't be had.
bool GetCursorScreenPosition(std::int32_t& x, std::int32_t& y);
// Turns a point in screen pixels into one of window's client area.
bool ScreenToClientPoint(WindowHandle window, std::int32_t& x, std::int32_t& y);
// Whether a Shift key is down at this moment.
bool IsShiftKeyDown();

// The window of this thread that has the mouse captured, or null.
WindowHandle GetCaptureWindow();
// Sends all mouse input to window until the capture is released.
void CaptureMouse(WindowHandle window);
void ReleaseMouseCapture();

// Makes window the active window of this thread.
bool ActivateWindow(WindowHandle window);

} // namespace platform
