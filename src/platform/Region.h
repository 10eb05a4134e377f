#pragma once

#include <memory>

// A GDI+ region: an area in the world units of the graphics it is used
// with, built from rectangles by union, intersection and exclusion.
// Deleting it deletes the native region; a failing call stores its status.
// Used on the thread of the main window only.
namespace platform {

struct RegionObject;
class Graphics;

// How CombineRect and CombineRegion join the other area to this one, with
// GDI+'s values.
enum class CombineMode {
    Replace = 0,
    Intersect = 1,
    Union = 2,
    Exclude = 4,
};

struct RegionBounds {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
};

class Region {
public:
    // The infinite region.
    Region();
    Region(float x, float y, float width, float height);
    ~Region();
    Region(const Region&) = delete;
    Region& operator=(const Region&) = delete;

    bool IsValid() const { return native != nullptr; }
    RegionObject* GetNative() const { return native; }

    // A copy of its own; null when it couldn't be made.
    std::unique_ptr<Region> Clone();
    bool MakeEmpty();
    bool CombineRect(float x, float y, float width, float height, CombineMode mode);
    bool CombineRegion(Region& other, CombineMode mode);
    // Whether the region holds no area, as graphics sees it; false also
    // when the question failed.
    bool IsEmpty(Graphics& graphics);
    // The smallest rectangle around the region; false when it can't be had.
    bool GetBounds(Graphics& graphics, RegionBounds& bounds);

private:
    explicit Region(RegionObject* native) : native(native) {}

    RegionObject* native = nullptr;
    int status = 0;
};

} // namespace platform
