#include "platform/Paint.h"

#include "platform/win32/WinHandles.h"

#include <windows.h>

namespace platform {

struct PaintScope::State {
    HWND hwnd = nullptr;
    HDC hdc = nullptr;
    PAINTSTRUCT paint{};
};

PaintScope::PaintScope(WindowHandle window) : state(new State)
{
    state->hwnd = win32::Hwnd(window);
    state->hdc = BeginPaint(state->hwnd, &state->paint);
}

// EndPaint also when BeginPaint failed: it then only shows the caret again.
PaintScope::~PaintScope()
{
    EndPaint(state->hwnd, &state->paint);
}

DeviceContextHandle PaintScope::Context() const
{
    return win32::Handle(state->hdc);
}

WindowContextScope::WindowContextScope(WindowHandle window)
    : window(window), context(win32::Handle(GetDC(win32::Hwnd(window))))
{
}

WindowContextScope::~WindowContextScope()
{
    if (context != nullptr)
        ReleaseDC(win32::Hwnd(window), win32::Hdc(context));
}

namespace {

RECT NativeRect(const PixelRect& rect)
{
    return {rect.left, rect.top, rect.right, rect.bottom};
}

} // namespace

bool InvalidateWindowRect(WindowHandle window, const PixelRect* rect)
{
    if (rect == nullptr)
        return InvalidateRect(win32::Hwnd(window), nullptr, FALSE) != FALSE;
    const RECT native = NativeRect(*rect);
    return InvalidateRect(win32::Hwnd(window), &native, FALSE) != FALSE;
}

bool UpdateWindowNow(WindowHandle window)
{
    return UpdateWindow(win32::Hwnd(window)) != FALSE;
}

bool GetContextClipBox(DeviceContextHandle context, PixelRect& box)
{
    RECT native{};
    const int kind = GetClipBox(win32::Hdc(context), &native);
    if (kind == ERROR)
        return false;
    box = {native.left, native.top, native.right, native.bottom};
    return true;
}

} // namespace platform
