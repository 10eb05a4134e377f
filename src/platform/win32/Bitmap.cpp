#include "platform/Bitmap.h"

#include "platform/Graphics.h"
#include "platform/win32/GdiplusFlat.h"

namespace platform {

Image::~Image()
{
    if (native != nullptr)
        Gdiplus::DllExports::GdipDisposeImage(win32::Native(native));
}

std::uint32_t Image::GetWidth()
{
    UINT width = 0;
    const Gdiplus::Status result = Gdiplus::DllExports::GdipGetImageWidth(win32::Native(native), &width);
    if (result != Gdiplus::Ok) {
        status = result;
        return 0;
    }
    return width;
}

std::uint32_t Image::GetHeight()
{
    UINT height = 0;
    const Gdiplus::Status result = Gdiplus::DllExports::GdipGetImageHeight(win32::Native(native), &height);
    if (result != Gdiplus::Ok) {
        status = result;
        return 0;
    }
    return height;
}

Bitmap::Bitmap(std::int32_t width, std::int32_t height, Graphics& graphics)
{
    GpBitmap* bitmap = nullptr;
    status = Gdiplus::DllExports::GdipCreateBitmapFromGraphics(width, height, win32::Native(graphics.GetNative()),
                                                               &bitmap);
    native = win32::Wrap(static_cast<GpImage*>(bitmap));
}

bool Bitmap::GetPixel(std::int32_t x, std::int32_t y, std::uint32_t& argb)
{
    Gdiplus::ARGB colour = 0;
    const Gdiplus::Status result = Gdiplus::DllExports::GdipBitmapGetPixel(
        static_cast<GpBitmap*>(win32::Native(native)), x, y, &colour);
    if (result != Gdiplus::Ok) {
        status = result;
        return false;
    }
    argb = colour;
    return true;
}

} // namespace platform
