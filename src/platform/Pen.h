#pragma once

#include <cstdint>
#include <string_view>

// GDI+ pens and paths: the outline of text and of shapes. Each wrapper
// deletes its native object and keeps the status of its last failing call.
// Main window's thread only.
namespace platform {

struct PenObject;
struct PathObject;
class FontFamily;
class StringFormat;

constexpr std::int32_t kLineJoinRound = 2;

class Pen {
public:
    // A pen of one ARGB colour and a width in world units.
    Pen(std::uint32_t argb, float width);
    ~Pen();
    Pen(const Pen&) = delete;
    Pen& operator=(const Pen&) = delete;

    bool IsValid() const { return native != nullptr; }
    PenObject* GetNative() const { return native; }

    bool SetColor(std::uint32_t argb);
    bool SetWidth(float width);
    bool SetLineJoin(std::int32_t join);

private:
    PenObject* native = nullptr;
    int status = 0;
};

// A figure of lines, curves and the outlines of glyphs, filled by the
// alternate rule.
class GraphicsPath {
public:
    GraphicsPath();
    ~GraphicsPath();
    GraphicsPath(const GraphicsPath&) = delete;
    GraphicsPath& operator=(const GraphicsPath&) = delete;

    bool IsValid() const { return native != nullptr; }
    PathObject* GetNative() const { return native; }

    bool AddLine(float x1, float y1, float x2, float y2);
    // A cardinal spline through three points, of tension 0.5.
    bool AddCurve(const float (&points)[6]);
    // The outlines of text laid out in the rectangle; emSize in world units.
    bool AddString(std::u16string_view text, FontFamily& family, std::int32_t style, float emSize, float x, float y,
                   float width, float height, StringFormat& format);

private:
    PathObject* native = nullptr;
    int status = 0;
};

} // namespace platform
