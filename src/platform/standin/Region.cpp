#include "platform/Region.h"

#include "platform/standin/Drawing.h"

#include <algorithm>
#include <new>

namespace platform {

namespace standin {

BoxList BoxFrom(float x, float y, float width, float height)
{
    const Box box{x, y, x + width, y + height};
    return box.HasArea() ? BoxList{box} : BoxList{};
}

BoxList Intersected(const BoxList& a, const BoxList& b)
{
    BoxList result;
    for (const Box& first : a) {
        for (const Box& second : b) {
            const Box overlap{std::max(first.left, second.left), std::max(first.top, second.top),
                              std::min(first.right, second.right), std::min(first.bottom, second.bottom)};
            if (overlap.HasArea())
                result.push_back(overlap);
        }
    }
    return result;
}

namespace {

// What is left of box outside cut: up to four boxes, the bands above and
// below it and the pieces left and right of it.
void AppendRemainder(BoxList& result, const Box& box, const Box& cut)
{
    const Box overlap{std::max(box.left, cut.left), std::max(box.top, cut.top), std::min(box.right, cut.right),
                      std::min(box.bottom, cut.bottom)};
    if (!overlap.HasArea()) {
        result.push_back(box);
        return;
    }
    const Box pieces[] = {
        {box.left, box.top, box.right, overlap.top},
        {box.left, overlap.bottom, box.right, box.bottom},
        {box.left, overlap.top, overlap.left, overlap.bottom},
        {overlap.right, overlap.top, box.right, overlap.bottom},
    };
    for (const Box& piece : pieces) {
        if (piece.HasArea())
            result.push_back(piece);
    }
}

} // namespace

BoxList Excluded(const BoxList& a, const BoxList& b)
{
    BoxList result = a;
    for (const Box& cut : b) {
        BoxList remainder;
        for (const Box& box : result)
            AppendRemainder(remainder, box, cut);
        result = std::move(remainder);
    }
    return result;
}

BoxList United(const BoxList& a, const BoxList& b)
{
    BoxList result = a;
    const BoxList added = Excluded(b, a);
    result.insert(result.end(), added.begin(), added.end());
    return result;
}

} // namespace standin

namespace {

standin::BoxList Combined(const standin::BoxList& a, const standin::BoxList& b, CombineMode mode)
{
    switch (mode) {
    case CombineMode::Replace:
        return b;
    case CombineMode::Intersect:
        return standin::Intersected(a, b);
    case CombineMode::Union:
        return standin::United(a, b);
    case CombineMode::Exclude:
        return standin::Excluded(a, b);
    }
    return a;
}

} // namespace

Region::Region() : native(new (std::nothrow) RegionObject)
{
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
    else
        native->boxes = standin::BoxFrom(-standin::kInfinity, -standin::kInfinity, 2 * standin::kInfinity, 2 * standin::kInfinity);
}

Region::Region(float x, float y, float width, float height) : native(new (std::nothrow) RegionObject)
{
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
    else
        native->boxes = standin::BoxFrom(x, y, width, height);
}

Region::~Region()
{
    delete native;
}

std::unique_ptr<Region> Region::Clone()
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return nullptr;
    }
    auto* copy = new (std::nothrow) RegionObject{native->boxes};
    if (copy == nullptr) {
        status = kGdiplusOutOfMemory;
        return nullptr;
    }
    return std::unique_ptr<Region>(new Region(copy));
}

bool Region::MakeEmpty()
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->boxes.clear();
    return true;
}

bool Region::CombineRect(float x, float y, float width, float height, CombineMode mode)
{
    if (native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->boxes = Combined(native->boxes, standin::BoxFrom(x, y, width, height), mode);
    return true;
}

bool Region::CombineRegion(Region& other, CombineMode mode)
{
    if (native == nullptr || other.native == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    native->boxes = Combined(native->boxes, other.native->boxes, mode);
    return true;
}

bool Region::IsEmpty(Graphics& graphics)
{
    if (native == nullptr || graphics.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    return native->boxes.empty();
}

// An empty region has bounds of 0 by 0 at the origin.
bool Region::GetBounds(Graphics& graphics, RegionBounds& bounds)
{
    if (native == nullptr || graphics.GetNative() == nullptr) {
        status = kGdiplusInvalidParameter;
        return false;
    }
    if (native->boxes.empty()) {
        bounds = {};
        return true;
    }
    standin::Box around = native->boxes.front();
    for (const standin::Box& box : native->boxes) {
        around.left = std::min(around.left, box.left);
        around.top = std::min(around.top, box.top);
        around.right = std::max(around.right, box.right);
        around.bottom = std::max(around.bottom, box.bottom);
    }
    bounds = {around.left, around.top, around.right - around.left, around.bottom - around.top};
    return true;
}

} // namespace platform
