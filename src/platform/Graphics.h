#pragma once

#include "platform/Paint.h"

#include <cstdint>
#include <string_view>

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
class Font;
class GraphicsPath;
class Image;
class Pen;
class Region;
class SolidBrush;
class StringFormat;

// A saved state of a Graphics: its transform and its clip.
using GraphicsState = unsigned int;

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

    // The horizontal resolution of the surface in dots per inch; 0 when it
    // can't be asked.
    float GetDpiX();

    // The world transform: each call puts a step in front of the ones made
    // before, so a point is first translated, then scaled, when the scale
    // was set first.
    bool ScaleWorldTransform(float sx, float sy);
    bool TranslateWorldTransform(float dx, float dy);

    // The clip, replaced by a rectangle or a region in world units.
    bool SetClipRect(float x, float y, float width, float height);
    bool SetClipRegion(Region& region);
    bool SetClipPath(GraphicsPath& path);
    // Saves the transform and the clip, and puts them back.
    GraphicsState Save();
    bool Restore(GraphicsState state);

    // Drawing, in the units of the world transform. True when it worked.
    bool FillRectangle(SolidBrush& brush, float x, float y, float width, float height);
    // Draws image unscaled with its corner at x, y.
    bool DrawImage(Image& image, int x, int y);
    // Lays text out in the rectangle as format says.
    bool DrawString(std::u16string_view text, Font& font, float x, float y, float width, float height,
                    StringFormat& format, SolidBrush& brush);
    bool DrawPath(Pen& pen, GraphicsPath& path);
    bool FillPath(SolidBrush& brush, GraphicsPath& path);

    // Settings that guards change for the length of a draw.
    std::int32_t GetSmoothingMode();
    bool SetSmoothingMode(std::int32_t mode);
    std::int32_t GetTextRenderingHint();
    bool SetTextRenderingHint(std::int32_t hint);

    GraphicsObject* GetNative() const { return native; }

private:
    GraphicsObject* native = nullptr;
    int status = kGdiplusOk;
};

constexpr std::int32_t kSmoothingModeAntiAlias = 4;
constexpr std::int32_t kTextRenderingHintSystemDefault = 0;

// Sets anti-aliased smoothing on a Graphics and puts the old mode back at
// the end of its scope.
class SmoothingGuard {
public:
    explicit SmoothingGuard(Graphics& graphics)
        : graphics(graphics), saved(graphics.GetSmoothingMode())
    {
        graphics.SetSmoothingMode(kSmoothingModeAntiAlias);
    }
    ~SmoothingGuard() { graphics.SetSmoothingMode(saved); }
    SmoothingGuard(const SmoothingGuard&) = delete;
    SmoothingGuard& operator=(const SmoothingGuard&) = delete;

private:
    Graphics& graphics;
    std::int32_t saved;
};

// Sets a text rendering hint on a Graphics and puts the old one back at
// the end of its scope.
class TextHintGuard {
public:
    TextHintGuard(Graphics& graphics, std::int32_t hint) : graphics(graphics), saved(graphics.GetTextRenderingHint())
    {
        graphics.SetTextRenderingHint(hint);
    }
    ~TextHintGuard() { graphics.SetTextRenderingHint(saved); }
    TextHintGuard(const TextHintGuard&) = delete;
    TextHintGuard& operator=(const TextHintGuard&) = delete;

private:
    Graphics& graphics;
    std::int32_t saved;
};

} // namespace platform
