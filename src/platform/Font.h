#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

// GDI+ text objects: a font family, a font made from it, and the layout of
// a string in a rectangle. Each wrapper deletes its native object and
// keeps the status of its last failing call. Main window's thread only.
namespace platform {

struct FontFamilyObject;
struct FontObject;
struct StringFormatObject;

constexpr std::int32_t kFontStyleRegular = 0;
constexpr std::int32_t kFontStyleBold = 1;

// How a string lies in its rectangle on one axis.
constexpr std::int32_t kStringAlignmentNear = 0;
constexpr std::int32_t kStringAlignmentCenter = 1;
constexpr std::int32_t kStringAlignmentFar = 2;
constexpr std::int32_t kStringFormatFlagsNoWrap = 0x1000;

class FontFamily {
public:
    // The family of this name; not valid when the system has none.
    explicit FontFamily(std::u16string_view name);
    ~FontFamily();
    FontFamily(const FontFamily&) = delete;
    FontFamily& operator=(const FontFamily&) = delete;

    // The system's generic sans-serif family; null when it can't be had.
    static std::unique_ptr<FontFamily> GenericSansSerif();

    bool IsValid() const { return native != nullptr; }
    FontFamilyObject* GetNative() const { return native; }

    // Metrics in design units; 0 when they can't be had.
    std::uint16_t GetEmHeight(std::int32_t style);
    std::uint16_t GetLineSpacing(std::int32_t style);

private:
    FontFamily() = default;

    FontFamilyObject* native = nullptr;
    int status = 0;
};

class Font {
public:
    // A font of family in size points.
    Font(FontFamily& family, float size, std::int32_t style);
    ~Font();
    Font(const Font&) = delete;
    Font& operator=(const Font&) = delete;

    bool IsValid() const { return native != nullptr; }
    FontObject* GetNative() const { return native; }

private:
    FontObject* native = nullptr;
    int status = 0;
};

class StringFormat {
public:
    StringFormat();
    ~StringFormat();
    StringFormat(const StringFormat&) = delete;
    StringFormat& operator=(const StringFormat&) = delete;

    bool IsValid() const { return native != nullptr; }
    StringFormatObject* GetNative() const { return native; }

    // Across the line, and the position of the lines.
    bool SetAlignment(std::int32_t alignment);
    bool SetLineAlignment(std::int32_t alignment);
    bool SetFlags(std::int32_t flags);

private:
    StringFormatObject* native = nullptr;
    int status = 0;
};

} // namespace platform
