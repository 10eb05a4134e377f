#include "platform/ToolTipControl.h"

#include "platform/win32/WinHandles.h"
#include "platform/win32/WinText.h"

#include <windows.h>
#include <commctrl.h>

#include <cstddef>
#include <string>

namespace platform {

namespace {

// The tool's record without its last field, lpReserved, which comctl32
// takes in every version: the compiler's figure for this build, since a
// 64-bit system rejects the 32-bit one.
constexpr UINT kToolInfoSize = offsetof(TTTOOLINFOW, lParam) + sizeof(LPARAM);
#if defined(_WIN32) && !defined(_WIN64)
static_assert(kToolInfoSize == 44, "the tool's record is 44 bytes on 32-bit Windows");
#endif

TTTOOLINFOW ToolInfo(const ToolTipTool& tool)
{
    TTTOOLINFOW info{};
    info.cbSize = kToolInfoSize;
    info.uFlags = tool.flags;
    info.hwnd = win32::Hwnd(tool.window);
    info.uId = tool.id;
    return info;
}

void Send(WindowHandle tip, UINT message, WPARAM wParam, LPARAM lParam)
{
    HWND hwnd = win32::Hwnd(tip);
    if (IsWindow(hwnd))
        SendMessageW(hwnd, message, wParam, lParam);
}

} // namespace

WindowHandle CreateToolTipWindow(WindowHandle host)
{
    HWND hwnd = CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, 0, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                                CW_USEDEFAULT, win32::Hwnd(host), nullptr, GetModuleHandleW(nullptr), nullptr);
    return win32::Handle(hwnd);
}

bool DestroyToolTipWindow(WindowHandle tip)
{
    HWND hwnd = win32::Hwnd(tip);
    return IsWindow(hwnd) && DestroyWindow(hwnd) != FALSE;
}

void AddToolTipTool(WindowHandle tip, const ToolTipTool& tool)
{
    TTTOOLINFOW info = ToolInfo(tool);
    Send(tip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&info));
}

void DeleteToolTipTool(WindowHandle tip, const ToolTipTool& tool)
{
    TTTOOLINFOW info = ToolInfo(tool);
    Send(tip, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&info));
}

// The text is the tool's only for the length of the call.
void UpdateToolTipText(WindowHandle tip, const ToolTipTool& tool, std::u16string_view text)
{
    std::u16string copy(text);
    TTTOOLINFOW info = ToolInfo(tool);
    info.lpszText = const_cast<wchar_t*>(win32::Wide(copy));
    Send(tip, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&info));
}

void ActivateToolTipTracking(WindowHandle tip, const ToolTipTool& tool, bool active)
{
    TTTOOLINFOW info = ToolInfo(tool);
    Send(tip, TTM_TRACKACTIVATE, active ? TRUE : FALSE, reinterpret_cast<LPARAM>(&info));
}

void SetToolTipTrackPosition(WindowHandle tip, std::int32_t x, std::int32_t y)
{
    Send(tip, TTM_TRACKPOSITION, 0, MAKELPARAM(static_cast<WORD>(x), static_cast<WORD>(y)));
}

} // namespace platform
