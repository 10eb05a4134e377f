#pragma once

#include "platform/Window.h"

#include <cstdint>

// The message queue of the calling thread: the messages posted to its
// windows or to itself, the timers of its windows, and the quit request.
// The message ids are the system's.
namespace platform {

constexpr std::uint32_t kMessageNull = 0x0000;
constexpr std::uint32_t kMessageDestroy = 0x0002;
constexpr std::uint32_t kMessageSize = 0x0005;
constexpr std::uint32_t kMessageSetFocus = 0x0007;
constexpr std::uint32_t kMessageKillFocus = 0x0008;
constexpr std::uint32_t kMessagePaint = 0x000F;
constexpr std::uint32_t kMessageClose = 0x0010;
constexpr std::uint32_t kMessageQuit = 0x0012;
constexpr std::uint32_t kMessageEraseBackground = 0x0014;
constexpr std::uint32_t kMessageSetFont = 0x0030;
constexpr std::uint32_t kMessageNcDestroy = 0x0082;
constexpr std::uint32_t kMessageNcMouseMove = 0x00A0;
constexpr std::uint32_t kMessageKeyDown = 0x0100;
constexpr std::uint32_t kMessageKeyUp = 0x0101;
constexpr std::uint32_t kMessageChar = 0x0102;
constexpr std::uint32_t kMessageInitDialog = 0x0110;
constexpr std::uint32_t kMessageCommand = 0x0111;
constexpr std::uint32_t kMessageTimer = 0x0113;
// The timer by which the system blinks the caret.
constexpr std::uint32_t kMessageCaretBlink = 0x0118;
constexpr std::uint32_t kMessageMouseMove = 0x0200;
constexpr std::uint32_t kMessageLeftButtonDown = 0x0201;
constexpr std::uint32_t kMessageLeftButtonUp = 0x0202;
constexpr std::uint32_t kMessageLeftButtonDoubleClick = 0x0203;
constexpr std::uint32_t kMessageRightButtonDown = 0x0204;
constexpr std::uint32_t kMessageRightButtonUp = 0x0205;
constexpr std::uint32_t kMessageRightButtonDoubleClick = 0x0206;
constexpr std::uint32_t kMessageMiddleButtonDown = 0x0207;
constexpr std::uint32_t kMessageMiddleButtonUp = 0x0208;
constexpr std::uint32_t kMessageMiddleButtonDoubleClick = 0x0209;
constexpr std::uint32_t kMessageMouseWheel = 0x020A;
constexpr std::uint32_t kMessageExtraButtonDown = 0x020B;
constexpr std::uint32_t kMessageExtraButtonUp = 0x020C;
constexpr std::uint32_t kMessageExtraButtonDoubleClick = 0x020D;
constexpr std::uint32_t kMessageDropFiles = 0x0233;
constexpr std::uint32_t kMessageUser = 0x0400;

constexpr std::uintptr_t kKeyTab = 0x09;
constexpr std::uintptr_t kKeyReturn = 0x0D;
constexpr std::uintptr_t kKeyEscape = 0x1B;

// One queued message, field for field what the system keeps. window is
// null for a message posted to the thread itself.
struct Message {
    WindowHandle window = nullptr;
    std::uint32_t id = kMessageNull;
    std::uintptr_t wParam = 0;
    std::intptr_t lParam = 0;
    std::uint32_t time = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
};

// Copies the next message into message and leaves it in the queue. false
// when the queue is empty: no posted message, no quit request, no timer due.
bool PumpPeekMessage(Message& message);
// Takes the next message out of the queue, sleeping until there is one.
// 1 for a message, 0 for the quit request (wParam holds its exit code),
// -1 when the system could not deliver one.
int WaitForMessage(Message& message);
// Adds the character messages that a key message makes.
void TranslateKeyMessage(const Message& message);
// Hands message to the procedure of its window; nothing for a message
// without window. The procedure's answer, or 0.
std::intptr_t DeliverMessage(const Message& message);
// Lets the dialog manager of dialog handle message: keyboard navigation,
// and Esc as the command with id 2. true when it used the message up,
// which it does for every message of the dialog, dispatching the others.
bool PreprocessDialogMessage(WindowHandle dialog, const Message& message);

// Asks the thread's loop to end with exitCode once the queue is empty.
void PostQuit(int exitCode);
// Puts a message into the queue of the thread that owns window.
bool PostToWindow(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam);
// Calls the procedure of window with a message at once and gives its answer.
std::intptr_t SendToWindow(WindowHandle window, std::uint32_t id, std::uintptr_t wParam, std::intptr_t lParam);

} // namespace platform
