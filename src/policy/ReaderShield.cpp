#include "policy/ReaderShield.h"

#include "base/Utf8.h"

namespace {

constexpr char32_t kShift = 0xF0000;

bool IsShielded(char32_t c)
{
    return (c >= 0xA1 && c <= 0x499) || (c >= 0x2C5E && c <= 0x3117 && c != 0x3000) || (c >= 0xFB06 && c <= 0xFEFE);
}

// Each character of text handed to change, which appends what stands for it.
// Bytes that are no UTF-8 are lone surrogates on the way (see
// PathUtf8ToWide) and come back as the same bytes.
template <typename Change>
std::string EachCharacter(std::string_view text, Change change)
{
    const std::u16string wide = PathUtf8ToWide(text);
    std::u16string result;
    result.reserve(wide.size());
    for (std::size_t i = 0; i < wide.size(); ++i) {
        char32_t c = wide[i];
        const std::size_t at = i;
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < wide.size() && wide[i + 1] >= 0xDC00 && wide[i + 1] <= 0xDFFF)
            c = 0x10000 + ((c - 0xD800) << 10) + (wide[++i] - 0xDC00);
        c = change(c, at);
        if (c >= 0x10000) {
            result.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            result.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        } else {
            result.push_back(static_cast<char16_t>(c));
        }
    }
    return WideToPathUtf8(result);
}

} // namespace

bool ShieldFromReader(std::string_view text, std::string& shielded, std::size_t& clash)
{
    std::size_t firstClash = std::u16string::npos;
    shielded = EachCharacter(text, [&](char32_t c, std::size_t at) {
        if (c >= kShift && IsShielded(c - kShift) && firstClash == std::u16string::npos)
            firstClash = at;
        return IsShielded(c) ? c + kShift : c;
    });
    if (firstClash == std::u16string::npos)
        return true;
    // The offset in bytes: the text before the character, as it was.
    const std::u16string wide = PathUtf8ToWide(text);
    clash = WideToPathUtf8(std::u16string_view(wide).substr(0, firstClash)).size();
    return false;
}

std::string UnshieldText(std::string_view text)
{
    return EachCharacter(text, [](char32_t c, std::size_t) {
        return c >= kShift && IsShielded(c - kShift) ? c - kShift : c;
    });
}
