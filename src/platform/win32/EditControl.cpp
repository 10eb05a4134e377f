#include "platform/EditControl.h"

#include "platform/win32/WinHandles.h"
#include "platform/win32/WinText.h"

#include <windows.h>

#include <vector>

namespace platform {

// The control has no title, no extended style and no menu id; the system
// gives a child made at the default place no size until it is placed.
WindowHandle CreateEditControl(WindowHandle parent, std::uint32_t style)
{
    HWND hwnd = CreateWindowExW(0, L"EDIT", nullptr, style, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                                CW_USEDEFAULT, win32::Hwnd(parent), nullptr, GetModuleHandleW(nullptr), nullptr);
    return win32::Handle(hwnd);
}

bool DestroyChildWindow(WindowHandle window)
{
    return DestroyWindow(win32::Hwnd(window)) != FALSE;
}

std::u16string GetControlText(WindowHandle window)
{
    HWND hwnd = win32::Hwnd(window);
    const int length = GetWindowTextLengthW(hwnd);
    if (length <= 0)
        return {};
    std::vector<wchar_t> buffer(static_cast<std::size_t>(length) + 1);
    const int copied = GetWindowTextW(hwnd, buffer.data(), length + 1);
    return win32::FromWide(buffer.data(), copied > 0 ? static_cast<std::size_t>(copied) : 0);
}

bool SetControlText(WindowHandle window, std::u16string_view text)
{
    return SetWindowTextW(win32::Hwnd(window), win32::Wide(std::u16string(text))) != FALSE;
}

PixelRect GetChildBounds(WindowHandle window)
{
    HWND hwnd = win32::Hwnd(window);
    RECT rect{};
    if (!GetWindowRect(hwnd, &rect))
        return {};
    MapWindowPoints(nullptr, GetParent(hwnd), reinterpret_cast<POINT*>(&rect), 2);
    return win32::FromRect(rect);
}

bool PlaceChildWindow(WindowHandle window, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height)
{
    return SetWindowPos(win32::Hwnd(window), nullptr, x, y, width, height, 0) != FALSE;
}

} // namespace platform
