#pragma once

#include <cstdint>

// GDI+ images: the wrapper of any image, and the bitmap in memory that the
// view draws into. Deleting a wrapper deletes the native image; a failing
// call stores its status. Used on the thread of the main window only.
namespace platform {

struct ImageObject;
class Graphics;

class Image {
public:
    virtual ~Image();
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    bool IsValid() const { return native != nullptr; }
    // The size in pixels; 0 when it can't be asked.
    std::uint32_t GetWidth();
    std::uint32_t GetHeight();

    ImageObject* GetNative() const { return native; }

protected:
    Image() = default;

    ImageObject* native = nullptr;
    int status = 0;
};

class Bitmap : public Image {
public:
    // A bitmap of width by height pixels in the format of graphics' device.
    Bitmap(std::int32_t width, std::int32_t height, Graphics& graphics);

    // The ARGB colour of one pixel; false outside the bitmap.
    bool GetPixel(std::int32_t x, std::int32_t y, std::uint32_t& argb);
};

} // namespace platform
