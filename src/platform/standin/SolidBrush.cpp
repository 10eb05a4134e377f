#include "platform/SolidBrush.h"

#include "platform/Graphics.h"
#include "platform/standin/Drawing.h"

#include <new>

namespace platform {

SolidBrush::SolidBrush(std::uint32_t argb)
{
    native = new (std::nothrow) BrushObject{argb};
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

SolidBrush::~SolidBrush()
{
    delete native;
}

} // namespace platform
