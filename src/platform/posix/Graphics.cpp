#include "platform/Graphics.h"

#include "platform/SystemSettings.h"
#include "platform/posix/Drawing.h"

#include <new>

namespace platform {

Graphics::Graphics(DeviceContextHandle context)
{
    if (context == nullptr) {
        status = kGdiplusInvalidParameter;
        return;
    }
    native = new (std::nothrow) GraphicsObject{nullptr, static_cast<float>(GetScreenDpiX())};
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

Graphics::Graphics(Image& image)
{
    if (image.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return;
    }
    native = new (std::nothrow) GraphicsObject{image.GetNative(), image.GetNative()->dpi};
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

Graphics::~Graphics()
{
    delete native;
}

float Graphics::GetDpiX()
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return 0;
    }
    return native->dpi;
}

} // namespace platform
