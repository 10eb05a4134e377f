#include "platform/Font.h"

#include "platform/Graphics.h"
#include "platform/standin/Drawing.h"
#include "platform/standin/StandIn.h"

#include <map>
#include <mutex>
#include <new>
#include <set>
#include <utility>

namespace platform {

namespace {

constexpr std::uint16_t kEmHeight = 2048;
constexpr std::uint16_t kLineSpacing = 2472;
// GDI+'s status for a family that isn't installed.
constexpr int kFontFamilyNotFound = 14;
constexpr char16_t kSansSerif[] = u"Microsoft Sans Serif";

struct FontState {
    std::mutex mutex;
    std::set<std::u16string> missing;
    std::map<std::u16string, std::uint16_t> lineSpacing;
    std::vector<testing::DrawnText> drawn;
    std::vector<testing::DrawnPath> paths;
};

FontState& Fonts()
{
    static FontState state;
    return state;
}

template <typename Object>
bool Check(Object* native, int& status)
{
    if (native == nullptr)
        status = kGdiplusInvalidParameter;
    return native != nullptr;
}

} // namespace

FontFamily::FontFamily(std::u16string_view name)
{
    {
        std::lock_guard lock(Fonts().mutex);
        if (name.empty() || Fonts().missing.count(std::u16string(name)) != 0) {
            status = kFontFamilyNotFound;
            return;
        }
    }
    native = new (std::nothrow) FontFamilyObject{std::u16string(name)};
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

FontFamily::~FontFamily()
{
    delete native;
}

std::unique_ptr<FontFamily> FontFamily::GenericSansSerif()
{
    return std::make_unique<FontFamily>(kSansSerif);
}

std::uint16_t FontFamily::GetEmHeight(std::int32_t)
{
    return Check(native, status) ? kEmHeight : 0;
}

std::uint16_t FontFamily::GetLineSpacing(std::int32_t)
{
    if (!Check(native, status))
        return 0;
    std::lock_guard lock(Fonts().mutex);
    const auto found = Fonts().lineSpacing.find(native->name);
    return found == Fonts().lineSpacing.end() ? kLineSpacing : found->second;
}

Font::Font(FontFamily& family, float size, std::int32_t style)
{
    if (family.GetNative() == nullptr || !(size > 0)) {
        status = kGdiplusInvalidParameter;
        return;
    }
    native = new (std::nothrow) FontObject{family.GetNative()->name, size, style};
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

Font::~Font()
{
    delete native;
}

StringFormat::StringFormat() : native(new (std::nothrow) StringFormatObject)
{
    if (native == nullptr)
        status = kGdiplusOutOfMemory;
}

StringFormat::~StringFormat()
{
    delete native;
}

bool StringFormat::SetAlignment(std::int32_t alignment)
{
    if (!Check(native, status))
        return false;
    native->alignment = alignment;
    return true;
}

bool StringFormat::SetLineAlignment(std::int32_t alignment)
{
    if (!Check(native, status))
        return false;
    native->lineAlignment = alignment;
    return true;
}

bool StringFormat::SetFlags(std::int32_t flags)
{
    if (!Check(native, status))
        return false;
    native->flags = flags;
    return true;
}

void standin::RecordDrawnText(testing::DrawnText text)
{
    std::lock_guard lock(Fonts().mutex);
    Fonts().drawn.push_back(std::move(text));
}

void standin::RecordDrawnPath(testing::DrawnPath path)
{
    std::lock_guard lock(Fonts().mutex);
    Fonts().paths.push_back(std::move(path));
}

std::vector<testing::DrawnPath> testing::TakeDrawnPaths()
{
    std::lock_guard lock(Fonts().mutex);
    return std::exchange(Fonts().paths, {});
}

void standin::ResetFonts()
{
    std::lock_guard lock(Fonts().mutex);
    Fonts().paths.clear();
    Fonts().missing.clear();
    Fonts().lineSpacing.clear();
    Fonts().drawn.clear();
}

std::vector<testing::DrawnText> testing::TakeDrawnTexts()
{
    std::lock_guard lock(Fonts().mutex);
    return std::exchange(Fonts().drawn, {});
}

void testing::SetMissingFontFamily(std::u16string name)
{
    std::lock_guard lock(Fonts().mutex);
    Fonts().missing.insert(std::move(name));
}

void testing::SetFontLineSpacing(std::u16string name, std::uint16_t spacing)
{
    std::lock_guard lock(Fonts().mutex);
    Fonts().lineSpacing[std::move(name)] = spacing;
}

} // namespace platform
