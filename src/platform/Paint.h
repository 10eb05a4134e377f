#pragma once

#include "platform/Window.h"

#include <memory>

// Painting a window: the device context of a paint message, and the one a
// window lends outside of painting.
namespace platform {

struct DeviceContextObject;
using DeviceContextHandle = DeviceContextObject*;

// Begins painting the invalid part of a window and ends it with its scope
// (BeginPaint and EndPaint). Made on the paint message only. Not copied.
class PaintScope {
public:
    explicit PaintScope(WindowHandle window);
    ~PaintScope();
    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;

    // Null when painting could not begin.
    DeviceContextHandle Context() const;

private:
    struct State;
    std::unique_ptr<State> state;
};

// The device context of a window's client area for the length of a scope
// (GetDC and ReleaseDC); a null window lends the screen's. Not copied.
class WindowContextScope {
public:
    explicit WindowContextScope(WindowHandle window);
    ~WindowContextScope();
    WindowContextScope(const WindowContextScope&) = delete;
    WindowContextScope& operator=(const WindowContextScope&) = delete;

    // Null when the window lent none.
    DeviceContextHandle Context() const { return context; }

private:
    WindowHandle window;
    DeviceContextHandle context;
};

// Marks rect of the window's client area, or all of it for null, to be
// painted, without erasing the background.
bool InvalidateWindowRect(WindowHandle window, const PixelRect* rect);
// Paints what is marked now, instead of when the queue comes to it.
bool UpdateWindowNow(WindowHandle window);
// The smallest rectangle around what may be drawn on context; false when
// it can't be had.
bool GetContextClipBox(DeviceContextHandle context, PixelRect& box);

} // namespace platform
