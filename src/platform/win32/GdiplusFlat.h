#pragma once

#include "platform/Bitmap.h"
#include "platform/Graphics.h"
#include "platform/Region.h"
#include "platform/SolidBrush.h"

#include <windows.h>
// GDI+'s headers need COM's types, which the lean Windows header leaves out.
#include <objbase.h>
#include <gdiplus.h>

// Between the platform's opaque GDI+ objects and the flat API's types.
using Gdiplus::GpGraphics;
using Gdiplus::GpImage;
using Gdiplus::GpBitmap;
using Gdiplus::GpBrush;
using Gdiplus::GpSolidFill;
using Gdiplus::GpRegion;

namespace platform::win32 {

inline GpGraphics* Native(GraphicsObject* graphics) { return reinterpret_cast<GpGraphics*>(graphics); }
inline GraphicsObject* Wrap(GpGraphics* graphics) { return reinterpret_cast<GraphicsObject*>(graphics); }
inline GpImage* Native(ImageObject* image) { return reinterpret_cast<GpImage*>(image); }
inline ImageObject* Wrap(GpImage* image) { return reinterpret_cast<ImageObject*>(image); }
inline GpRegion* Native(RegionObject* region) { return reinterpret_cast<GpRegion*>(region); }
inline RegionObject* Wrap(GpRegion* region) { return reinterpret_cast<RegionObject*>(region); }
inline GpBrush* Native(BrushObject* brush) { return reinterpret_cast<GpBrush*>(brush); }
inline BrushObject* Wrap(GpBrush* brush) { return reinterpret_cast<BrushObject*>(brush); }

} // namespace platform::win32
