#pragma once

#include "platform/Paint.h"
#include "platform/Window.h"

#include <windows.h>

// Between the platform's opaque handles and records and the Win32 ones they
// stand for.
namespace platform::win32 {

inline HWND Hwnd(WindowHandle window) { return reinterpret_cast<HWND>(window); }
inline WindowHandle Handle(HWND hwnd) { return reinterpret_cast<WindowHandle>(hwnd); }
inline HDC Hdc(DeviceContextHandle context) { return reinterpret_cast<HDC>(context); }
inline DeviceContextHandle Handle(HDC hdc) { return reinterpret_cast<DeviceContextHandle>(hdc); }

inline PixelRect FromRect(const RECT& rect)
{
    return {static_cast<std::int32_t>(rect.left), static_cast<std::int32_t>(rect.top),
            static_cast<std::int32_t>(rect.right), static_cast<std::int32_t>(rect.bottom)};
}

} // namespace platform::win32
