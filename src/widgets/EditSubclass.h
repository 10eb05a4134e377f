#pragma once

#include "loop/MessageFilter.h"
#include "platform/MessageQueue.h"
#include "platform/Window.h"
#include "platform/WindowHook.h"

#include <cstdint>

class TextBox;

// Stands between an edit control and the control's own window procedure,
// and sees the keys of its thread's message loop before any window does:
// focus loss and keys go to the Viewer of its TextBox, which owns it. The
// control reaches this object through the platform's window hook, a link
// kept with the window, not a stub of code made at run time. Main window's
// thread only. Not copied.
class EditSubclass : public MessageFilter {
public:
    explicit EditSubclass(TextBox* box);
    EditSubclass(const EditSubclass&) = delete;
    EditSubclass& operator=(const EditSubclass&) = delete;

    // Message dispatch
    virtual std::intptr_t ProcessWindowMessage(platform::WindowHandle window, std::uint32_t message,
                                               std::uintptr_t wParam, std::intptr_t lParam);
    virtual ~EditSubclass();
    virtual platform::HookProcedure GetWindowProc();
    virtual void OnFinalMessage(platform::WindowHandle window);

    // Message filter
    bool PreTranslateMessage(platform::Message& message) override;

    // Operations
    bool SubclassWindow(platform::WindowHandle window);
    void UnsubclassWindow();
    platform::WindowHandle GetWindow() const { return Window; }

private:
    static std::intptr_t WindowProc(void* object, platform::WindowHandle window, std::uint32_t message,
                                    std::uintptr_t wParam, std::intptr_t lParam);

    platform::WindowHandle Window = nullptr;
    platform::WindowProcedureHandle SavedProcedure;
    platform::WindowHookLink Link;
    TextBox* const Box;
};
