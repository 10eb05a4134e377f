#pragma once

#include "platform/Window.h"

// Takes the mouse capture for a host window, or gives it back, and keeps
// the one process-wide note of who took it. With keep, building the guard
// captures the mouse unless some window of the thread holds it already;
// without, dropping it releases the capture when the host window holds it,
// and clears the note when owner took it. Main window's thread only.
class CaptureGuard {
public:
    CaptureGuard(platform::WindowHandle window, bool keep, const void* owner);
    ~CaptureGuard();
    CaptureGuard(const CaptureGuard&) = delete;
    CaptureGuard& operator=(const CaptureGuard&) = delete;

    // The owner that took the capture last, or null.
    static const void* GetCaptureOwner();

private:
    platform::WindowHandle window;
    bool keep;
    const void* owner;
};
