#include "app/VersionInfo.h"

#include "files/PathParts.h"
#include "platform/VersionResource.h"

#include <string>

namespace {

bool IsWhiteSpace(char16_t unit)
{
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

WideString Trimmed(std::u16string_view text)
{
    while (!text.empty() && IsWhiteSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsWhiteSpace(text.back()))
        text.remove_suffix(1);
    return WideString(text);
}

} // namespace

// False when the file has no version block or it can't be read.
bool VersionInfo::Load(const WideString& fileName)
{
    const WideString path = fileName.IsEmpty() ? PathParts(WideString()).GetWhole() : fileName;
    const std::uint32_t size = platform::GetVersionBlockSize(path.View());
    if (size == 0 || !block.Resize(size))
        return false;
    return platform::ReadVersionBlock(path.View(), block.Data(), size);
}

// Empty when there is no block or the table has no product version.
WideString VersionInfo::GetProductVersion() const
{
    if (block.Size() == 0)
        return {};
    std::u16string text;
    const WideString subBlock = WideString(u"\\StringFileInfo\\") + translation + u"\\ProductVersion";
    if (!platform::QueryVersionText(block.Data(), subBlock.View(), text))
        return {};
    return WideString(text);
}

// The product version cut at its commas, each part trimmed; true when
// there is at least one part.
bool VersionInfo::GetVersionParts(Array<WideString>& parts) const
{
    const WideString version = GetProductVersion();
    if (version.IsEmpty())
        return false;
    std::u16string_view rest = version.View();
    for (;;) {
        const std::size_t comma = rest.find(u',');
        parts.Add(Trimmed(rest.substr(0, comma)));
        if (comma == std::u16string_view::npos)
            break;
        rest.remove_prefix(comma + 1);
    }
    return !parts.IsEmpty();
}

// Empty with fewer than three parts.
WideString VersionInfo::GetVersionText() const
{
    Array<WideString> parts;
    GetVersionParts(parts);
    if (parts.Count() < 3)
        return {};
    return parts.At(0) + u"." + parts.At(1) + parts.At(2);
}
