#pragma once

#include "platform/Paint.h"

// GDI+ drawing surfaces. Each wrapper holds the native object and the
// status of its last failing call: a failure is stored, never thrown, and
// drawing goes on. Deleting a wrapper deletes the native object. Used on
// the thread of the main window only.
namespace platform {

// GDI+ status values that callers look at.
constexpr int kGdiplusOk = 0;
constexpr int kGdiplusGenericError = 1;
constexpr int kGdiplusInvalidParameter = 2;
constexpr int kGdiplusOutOfMemory = 3;

struct GraphicsObject;
class Image;
class SolidBrush;

// A drawing surface on a device context or on an image. Not copied.
class Graphics {
public:
    explicit Graphics(DeviceContextHandle context);
    explicit Graphics(Image& image);
    ~Graphics();
    Graphics(const Graphics&) = delete;
    Graphics& operator=(const Graphics&) = delete;

    // False when the native surface could not be made.
    bool IsValid() const { return native != nullptr; }
    int GetLastStatus() const { return status; }

    // The horizontal resolution of the surface in dots per inch; 0 when it
    // can't be asked.
    float GetDpiX();

    // Drawing, in the units of the world transform. True when it worked.
    bool FillRectangle(SolidBrush& brush, float x, float y, float width, float height);

    GraphicsObject* GetNative() const { return native; }

private:
    GraphicsObject* native = nullptr;
    int status = kGdiplusOk;
};

} // namespace platform
