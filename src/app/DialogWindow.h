#pragma once

#include "platform/Window.h"

#include <cstdint>

// The base of a modeless dialog whose messages go to an object: it makes
// the window from a template, binds it to the object at its first message
// and hands every message to ProcessWindowMessage. Lives on the thread that
// makes its window, which must outlive the window. Not copied.
class DialogWindow {
public:
    DialogWindow() = default;
    DialogWindow(const DialogWindow&) = delete;
    DialogWindow& operator=(const DialogWindow&) = delete;

    // Overrideables
    // true when the message was handled, with result as the answer to the
    // system; false for the system's default dialog processing.
    virtual bool ProcessWindowMessage(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                                      std::intptr_t lParam, std::intptr_t& result) = 0;
    virtual ~DialogWindow() = default;
    virtual platform::DialogProcedure GetDialogProc();
    virtual void OnFinalMessage(platform::WindowHandle window);

    // Operations
    platform::WindowHandle Create(platform::InstanceHandle instance, int templateId);
    platform::WindowHandle GetWindow() const { return window; }
    // Moves the window to the middle of the nearest monitor's work area.
    bool CenterWindow();

protected:
    static bool StartDialogProc(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                                std::intptr_t lParam, std::intptr_t& result);
    static bool DialogProc(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                           std::intptr_t lParam, std::intptr_t& result);

    platform::WindowHandle window = nullptr;
};

// The top-left corner of a window of the size of windowRect centred in
// area, moved back inside area where it would stick out; when it is larger
// than area its left and top edges stay inside.
struct WindowOrigin {
    std::int32_t x;
    std::int32_t y;
};
WindowOrigin CenterWithin(const platform::PixelRect& windowRect, const platform::PixelRect& area);
