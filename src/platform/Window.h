#pragma once

#include "base/PixelRect.h"

#include <cstdint>

// Top-level dialog windows: making one from a template of the program's
// resources, the procedure that receives its messages, its place on the
// screen, its timers and its part in file drops. Every operation is called
// on the thread that made the window.
namespace platform {

struct WindowObject;
using WindowHandle = WindowObject*;

// The module whose resources hold the dialog templates.
struct InstanceObject;
using InstanceHandle = InstanceObject*;

using PixelRect = ::PixelRect;

// Receives every message of a dialog window that reaches its procedure.
// Returns true when the message was handled; result is then the answer to
// the system. false hands the message to the system's default dialog
// processing.
using DialogProcedure = bool (*)(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                                 std::intptr_t lParam, std::intptr_t& result);

// Flags of SetWindowPosition, with the system's values.
constexpr std::uint32_t kPositionNoSize = 0x0001;
constexpr std::uint32_t kPositionNoMove = 0x0002;
constexpr std::uint32_t kPositionNoZOrder = 0x0004;
constexpr std::uint32_t kPositionNoActivate = 0x0010;

// Show commands of ShowWindowAs.
constexpr int kShowHide = 0;
constexpr int kShowNormal = 1;

// Makes a modeless dialog without owner from template templateId of
// instance. Its messages go to procedure from the first one on, which is
// sent during this call, as is the initialisation message. Null when the
// window could not be made.
WindowHandle CreateDialogWindow(InstanceHandle instance, int templateId, DialogProcedure procedure);
// Sends the later messages of window to procedure instead.
void SetDialogProcedure(WindowHandle window, DialogProcedure procedure);
bool DestroyDialogWindow(WindowHandle window);
bool IsLiveWindow(WindowHandle window);

// One pointer that the window keeps for its owner; null until set.
void SetWindowContext(WindowHandle window, void* context);
void* GetWindowContext(WindowHandle window);

bool ShowWindowAs(WindowHandle window, int showCommand);
bool IsWindowShown(WindowHandle window);

// The window's frame and its client area, in screen pixels.
PixelRect GetWindowBounds(WindowHandle window);
PixelRect GetClientBounds(WindowHandle window);
// The work area of the monitor nearest to window: the screen without task bars.
PixelRect GetNearestWorkArea(WindowHandle window);
// Moves and sizes the window as the kPosition flags allow.
bool SetWindowPosition(WindowHandle window, std::int32_t x, std::int32_t y, std::int32_t width,
                       std::int32_t height, std::uint32_t flags);

// A timer that posts the timer message with timerId every periodMs
// milliseconds while the thread's queue is waited on. Setting one that
// exists restarts it.
bool StartTimer(WindowHandle window, std::uintptr_t timerId, std::uint32_t periodMs);

// Whether files dropped on the window arrive as the drop message.
void AcceptDroppedFiles(WindowHandle window, bool accept);

// The desktop window, which owns what has no owner of its own.
WindowHandle GetDesktop();
// Whether the window takes mouse and keyboard input, and switching that;
// the switch tells whether the window was disabled before.
bool IsWindowInputEnabled(WindowHandle window);
bool EnableWindowInput(WindowHandle window, bool enable);

} // namespace platform
