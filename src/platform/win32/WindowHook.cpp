#include "platform/WindowHook.h"

#include "platform/win32/WinHandles.h"

#include <windows.h>

namespace platform {

namespace {

// A hooked window finds its object through a property of the window that
// holds the link. So one procedure serves every hooked window, and no code
// is made at run time: nothing needs executable memory, which the system's
// data execution prevention forbids, and the procedure's address fits the
// procedure slot on 32-bit and 64-bit Windows alike.
constexpr wchar_t kLinkProperty[] = L"Sondara.WindowHookLink";

LRESULT CALLBACK HookedWindowProcedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    const auto* link = static_cast<const WindowHookLink*>(GetPropW(hwnd, kLinkProperty));
    if (link == nullptr || link->procedure == nullptr)
        return DefWindowProcW(hwnd, message, wParam, lParam);
    return link->procedure(link->object, win32::Handle(hwnd), message, wParam, lParam);
}

LONG_PTR HookValue()
{
    return reinterpret_cast<LONG_PTR>(&HookedWindowProcedure);
}

} // namespace

WindowProcedureHandle HookWindowProcedure(WindowHandle window, const WindowHookLink* link)
{
    HWND hwnd = win32::Hwnd(window);
    if (!IsWindow(hwnd) || !SetPropW(hwnd, kLinkProperty, const_cast<WindowHookLink*>(link)))
        return nullptr;
    const LONG_PTR previous = SetWindowLongPtrW(hwnd, GWLP_WNDPROC, HookValue());
    if (previous == 0) {
        RemovePropW(hwnd, kLinkProperty);
        return nullptr;
    }
    return reinterpret_cast<WindowProcedureHandle>(previous);
}

bool UnhookWindowProcedure(WindowHandle window, WindowProcedureHandle procedure)
{
    HWND hwnd = win32::Hwnd(window);
    if (!IsWindow(hwnd) || GetWindowLongPtrW(hwnd, GWLP_WNDPROC) != HookValue())
        return false;
    SetWindowLongPtrW(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    RemovePropW(hwnd, kLinkProperty);
    return true;
}

std::intptr_t CallWindowProcedure(WindowProcedureHandle procedure, WindowHandle window, std::uint32_t message,
                                  std::uintptr_t wParam, std::intptr_t lParam)
{
    return CallWindowProcW(reinterpret_cast<WNDPROC>(procedure), win32::Hwnd(window), message, wParam, lParam);
}

WindowProcedureHandle DefaultWindowProcedure()
{
    return reinterpret_cast<WindowProcedureHandle>(&DefWindowProcW);
}

} // namespace platform
