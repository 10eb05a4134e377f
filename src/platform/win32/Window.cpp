#include "platform/Window.h"

#include "platform/win32/WinHandles.h"

#include <windows.h>
#include <shellapi.h>

namespace platform {

namespace {

// The procedure of a dialog whose first message has not come yet. A dialog
// is made on one thread from start to end, so a thread-local slot is enough,
// and a dialog made inside another's initialisation finds its own.
thread_local DialogProcedure creatingProcedure = nullptr;

bool AnswersDirectly(UINT message)
{
    switch (message) {
    case WM_INITDIALOG:
    case WM_COMPAREITEM:
    case WM_VKEYTOITEM:
    case WM_CHARTOITEM:
    case WM_QUERYDRAGICON:
    case WM_CTLCOLORMSGBOX:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORDLG:
    case WM_CTLCOLORSCROLLBAR:
    case WM_CTLCOLORSTATIC:
        return true;
    default:
        return false;
    }
}

// The one real dialog procedure of the program. It keeps the logic's
// procedure in the dialog's user slot and translates the logic's
// (handled, result) into the system's way of answering a dialog message.
INT_PTR CALLBACK DialogTrampoline(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto procedure = reinterpret_cast<DialogProcedure>(GetWindowLongPtrW(hwnd, DWLP_USER));
    if (procedure == nullptr) {
        procedure = creatingProcedure;
        if (procedure == nullptr)
            return FALSE;
        creatingProcedure = nullptr;
        SetWindowLongPtrW(hwnd, DWLP_USER, reinterpret_cast<LONG_PTR>(procedure));
    }
    std::intptr_t result = 0;
    if (!procedure(win32::Handle(hwnd), message, wParam, lParam, result))
        return FALSE;
    if (AnswersDirectly(message))
        return static_cast<INT_PTR>(result);
    // After the last message the window is gone and has no slot to answer in.
    if (IsWindow(hwnd))
        SetWindowLongPtrW(hwnd, DWLP_MSGRESULT, static_cast<LONG_PTR>(result));
    return TRUE;
}

} // namespace

WindowHandle CreateDialogWindow(InstanceHandle instance, int templateId, DialogProcedure procedure)
{
    creatingProcedure = procedure;
    HWND hwnd = CreateDialogParamW(reinterpret_cast<HINSTANCE>(instance), MAKEINTRESOURCEW(templateId), nullptr,
                                   DialogTrampoline, 0);
    creatingProcedure = nullptr;
    return win32::Handle(hwnd);
}

void SetDialogProcedure(WindowHandle window, DialogProcedure procedure)
{
    SetWindowLongPtrW(win32::Hwnd(window), DWLP_USER, reinterpret_cast<LONG_PTR>(procedure));
}

bool DestroyDialogWindow(WindowHandle window)
{
    return DestroyWindow(win32::Hwnd(window)) != FALSE;
}

bool IsLiveWindow(WindowHandle window)
{
    return window != nullptr && IsWindow(win32::Hwnd(window)) != FALSE;
}

void SetWindowContext(WindowHandle window, void* context)
{
    SetWindowLongPtrW(win32::Hwnd(window), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(context));
}

void* GetWindowContext(WindowHandle window)
{
    return reinterpret_cast<void*>(GetWindowLongPtrW(win32::Hwnd(window), GWLP_USERDATA));
}

bool ShowWindowAs(WindowHandle window, int showCommand)
{
    return ShowWindow(win32::Hwnd(window), showCommand) != FALSE;
}

bool IsWindowShown(WindowHandle window)
{
    return IsWindowVisible(win32::Hwnd(window)) != FALSE;
}

PixelRect GetWindowBounds(WindowHandle window)
{
    RECT rect{};
    GetWindowRect(win32::Hwnd(window), &rect);
    return win32::FromRect(rect);
}

PixelRect GetClientBounds(WindowHandle window)
{
    RECT rect{};
    GetClientRect(win32::Hwnd(window), &rect);
    MapWindowPoints(win32::Hwnd(window), nullptr, reinterpret_cast<POINT*>(&rect), 2);
    return win32::FromRect(rect);
}

PixelRect GetNearestWorkArea(WindowHandle window)
{
    MONITORINFO info{};
    info.cbSize = sizeof(info);
    HMONITOR monitor = MonitorFromWindow(win32::Hwnd(window), MONITOR_DEFAULTTONEAREST);
    if (!GetMonitorInfoW(monitor, &info))
        return {};
    return win32::FromRect(info.rcWork);
}

bool SetWindowPosition(WindowHandle window, std::int32_t x, std::int32_t y, std::int32_t width,
                       std::int32_t height, std::uint32_t flags)
{
    return SetWindowPos(win32::Hwnd(window), nullptr, x, y, width, height, flags) != FALSE;
}

bool StartTimer(WindowHandle window, std::uintptr_t timerId, std::uint32_t periodMs)
{
    return SetTimer(win32::Hwnd(window), timerId, periodMs, nullptr) != 0;
}

void AcceptDroppedFiles(WindowHandle window, bool accept)
{
    DragAcceptFiles(win32::Hwnd(window), accept ? TRUE : FALSE);
}

WindowHandle GetDesktop()
{
    return win32::Handle(GetDesktopWindow());
}

bool IsWindowInputEnabled(WindowHandle window)
{
    return IsWindowEnabled(win32::Hwnd(window)) != FALSE;
}

bool EnableWindowInput(WindowHandle window, bool enable)
{
    return EnableWindow(win32::Hwnd(window), enable ? TRUE : FALSE) != FALSE;
}

} // namespace platform
