#include "engine/CaptureGuard.h"

#include "platform/Input.h"

namespace {

const void* captureOwner = nullptr;

} // namespace

CaptureGuard::CaptureGuard(platform::WindowHandle window, bool keep, const void* owner)
    : window(window), keep(keep), owner(owner)
{
    if (keep && platform::GetCaptureWindow() == nullptr) {
        platform::CaptureMouse(window);
        captureOwner = owner;
    }
}

CaptureGuard::~CaptureGuard()
{
    if (keep || window == nullptr || platform::GetCaptureWindow() != window)
        return;
    platform::ReleaseMouseCapture();
    if (captureOwner == owner)
        captureOwner = nullptr;
}

const void* CaptureGuard::GetCaptureOwner()
{
    return captureOwner;
}
