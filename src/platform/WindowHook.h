#pragma once

#include "platform/Window.h"

#include <cstdint>

// Putting an object of the logic in front of the procedure of a window that
// the system made, such as an edit control: its messages go to the object
// first, which passes on what it doesn't keep. Called on the thread that
// owns the window.
namespace platform {

// A window procedure as the system keeps it.
struct WindowProcedureObject;
using WindowProcedureHandle = WindowProcedureObject*;

// Gets each message of a hooked window, with the object it is linked to.
using HookProcedure = std::intptr_t (*)(void* object, WindowHandle window, std::uint32_t message,
                                        std::uintptr_t wParam, std::intptr_t lParam);

// What ties a hooked window to its object. The object keeps the link, and
// takes the hook off before the link goes.
struct WindowHookLink {
    HookProcedure procedure = nullptr;
    void* object = nullptr;
};

// Makes the window's messages go to link, and gives the procedure that they
// went to until now. Null, and nothing changed, when the window isn't alive.
WindowProcedureHandle HookWindowProcedure(WindowHandle window, const WindowHookLink* link);
// Puts procedure back in place of the hook, but only while the hook is the
// window's procedure: false when something else has replaced it since, or
// the window is gone.
bool UnhookWindowProcedure(WindowHandle window, WindowProcedureHandle procedure);
// Hands a message to a procedure that a hook replaced.
std::intptr_t CallWindowProcedure(WindowProcedureHandle procedure, WindowHandle window, std::uint32_t message,
                                  std::uintptr_t wParam, std::intptr_t lParam);
// The system's default processing of a window's messages.
WindowProcedureHandle DefaultWindowProcedure();

} // namespace platform
