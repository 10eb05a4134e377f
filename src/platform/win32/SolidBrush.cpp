#include "platform/SolidBrush.h"

#include "platform/win32/GdiplusFlat.h"

namespace platform {

SolidBrush::SolidBrush(std::uint32_t argb)
{
    GpSolidFill* brush = nullptr;
    status = Gdiplus::DllExports::GdipCreateSolidFill(argb, &brush);
    native = win32::Wrap(static_cast<GpBrush*>(brush));
}

SolidBrush::~SolidBrush()
{
    if (native != nullptr)
        Gdiplus::DllExports::GdipDeleteBrush(win32::Native(native));
}

} // namespace platform
