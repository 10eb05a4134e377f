#include "platform/MessageQueue.h"

#include "platform/win32/WinHandles.h"

#include <windows.h>

namespace platform {

namespace {

MSG ToMsg(const Message& message)
{
    MSG msg{};
    msg.hwnd = win32::Hwnd(message.window);
    msg.message = message.id;
    msg.wParam = message.wParam;
    msg.lParam = message.lParam;
    msg.time = message.time;
    msg.pt.x = message.x;
    msg.pt.y = message.y;
    return msg;
}

void FromMsg(const MSG& msg, Message& message)
{
    message.window = win32::Handle(msg.hwnd);
    message.id = msg.message;
    message.wParam = msg.wParam;
    message.lParam = msg.lParam;
    message.time = msg.time;
    message.x = msg.pt.x;
    message.y = msg.pt.y;
}

} // namespace

bool PumpPeekMessage(Message& message)
{
    MSG msg{};
    if (!PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE))
        return false;
    FromMsg(msg, message);
    return true;
}

int WaitForMessage(Message& message)
{
    MSG msg{};
    BOOL result = GetMessageW(&msg, nullptr, 0, 0);
    if (result == -1)
        return -1;
    FromMsg(msg, message);
    return result == 0 ? 0 : 1;
}

void TranslateKeyMessage(const Message& message)
{
    MSG msg = ToMsg(message);
    TranslateMessage(&msg);
}

std::intptr_t DeliverMessage(const Message& message)
{
    MSG msg = ToMsg(message);
    return DispatchMessageW(&msg);
}

bool PreprocessDialogMessage(WindowHandle dialog, const Message& message)
{
    MSG msg = ToMsg(message);
    return IsDialogMessageW(win32::Hwnd(dialog), &msg) != FALSE;
}

void PostQuit(int exitCode)
{
    PostQuitMessage(exitCode);
}

bool PostToWindow(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
{
    return PostMessageW(win32::Hwnd(window), id, wParam, lParam) != FALSE;
}

std::intptr_t SendToWindow(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam)
{
    return SendMessageW(win32::Hwnd(window), id, wParam, lParam);
}

} // namespace platform
