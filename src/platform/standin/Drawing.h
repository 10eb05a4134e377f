#pragma once

#include "platform/Bitmap.h"
#include "platform/Font.h"
#include "platform/Graphics.h"
#include "platform/Pen.h"
#include "platform/Region.h"
#include "platform/SolidBrush.h"
#include "platform/standin/TestHooks.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The stand-in's GDI+ objects: images are ARGB pixels in memory, and a
// drawing surface is the image it draws into, or nothing for a device
// context, whose pixels the stand-in doesn't keep.

struct platform::ImageObject {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float dpi = 0;
    // Rows from the top, ARGB.
    std::unique_ptr<std::uint32_t[]> pixels;
};

namespace platform::standin {

// A rectangle by its edges; it holds area only when right > left and
// bottom > top.
struct Box {
    float left = 0;
    float top = 0;
    float right = 0;
    float bottom = 0;

    bool HasArea() const { return right > left && bottom > top; }
};

// Areas are lists of boxes that don't overlap, on the model of a disjoint
// rectangle set. The infinite region is the box that GDI+ gives as its
// bounds.
using BoxList = std::vector<Box>;
constexpr float kInfinity = 4194304.0f;

BoxList BoxFrom(float x, float y, float width, float height);
BoxList Intersected(const BoxList& a, const BoxList& b);
BoxList Excluded(const BoxList& a, const BoxList& b);
BoxList United(const BoxList& a, const BoxList& b);

// device = world x scale + offset, on each axis.
struct Transform {
    float scaleX = 1;
    float scaleY = 1;
    float offsetX = 0;
    float offsetY = 0;

    Box ToDevice(const Box& box) const;
};

struct SavedGraphics {
    Transform transform;
    std::optional<BoxList> clip;
};

} // namespace platform::standin

struct platform::RegionObject {
    standin::BoxList boxes;
};

struct platform::GraphicsObject {
    ImageObject* image = nullptr;
    float dpi = 0;
    standin::Transform transform;
    // In device pixels; none is no clip at all.
    std::optional<standin::BoxList> clip;
    std::vector<standin::SavedGraphics> saved;
    std::int32_t smoothingMode = 0;
    std::int32_t textRenderingHint = 0;
};

// Text isn't rendered: strings, and the paths made of them, keep what was
// asked for, and drawing them records it for tests.
struct platform::FontFamilyObject {
    std::u16string name;
};

struct platform::FontObject {
    std::u16string family;
    float size = 0;
    std::int32_t style = 0;
};

struct platform::StringFormatObject {
    std::int32_t alignment = 0;
    std::int32_t lineAlignment = 0;
    std::int32_t flags = 0;
};

struct platform::PenObject {
    std::uint32_t argb = 0;
    float width = 0;
    std::int32_t lineJoin = 0;
};

// A path keeps its strings as they were laid out, and its lines and
// curves as text for the record, with the box around their points.
struct platform::PathObject {
    std::vector<testing::DrawnText> strings;
    std::vector<std::string> figures;
    std::optional<standin::Box> around;
};

namespace platform::standin {

// Adds a drawn text or path to the record that tests take.
void RecordDrawnText(testing::DrawnText text);
void RecordDrawnPath(testing::DrawnPath path);

} // namespace platform::standin

struct platform::BrushObject {
    std::uint32_t argb = 0;
};

namespace platform::standin {

// colour laid over pixel as GDI+ composites by default: the source over
// what is there, with straight (not premultiplied) alpha.
std::uint32_t BlendSourceOver(std::uint32_t pixel, std::uint32_t colour);

} // namespace platform::standin
