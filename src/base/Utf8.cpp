#include "base/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr char16_t kReplacement = 0xFFFD;

// The length of the valid sequence at the start of bytes, 0 when there is none.
std::size_t SequenceLength(std::string_view bytes, char32_t& codePoint)
{
    auto unit = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    unsigned char lead = unit(0);
    std::size_t length;
    char32_t minimum;
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2, minimum = 0x80, codePoint = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3, minimum = 0x800, codePoint = lead & 0x0F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4, minimum = 0x10000, codePoint = lead & 0x07;
    } else {
        return 0;
    }
    if (bytes.size() < length)
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((unit(i) & 0xC0) != 0x80)
            return 0;
        codePoint = (codePoint << 6) | (unit(i) & 0x3F);
    }
    if (codePoint < minimum || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return 0;
    return length;
}

// Decodes UTF-8; each byte that starts no valid sequence becomes
// invalid(byte).
template <typename Invalid>
std::u16string Decode(std::string_view bytes, Invalid invalid)
{
    std::u16string result;
    result.reserve(bytes.size());
    while (!bytes.empty()) {
        char32_t codePoint = 0;
        std::size_t length = SequenceLength(bytes, codePoint);
        if (length == 0) {
            result.push_back(invalid(static_cast<unsigned char>(bytes[0])));
            bytes.remove_prefix(1);
            continue;
        }
        if (codePoint >= 0x10000) {
            codePoint -= 0x10000;
            result.push_back(static_cast<char16_t>(0xD800 + (codePoint >> 10)));
            result.push_back(static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF)));
        } else {
            result.push_back(static_cast<char16_t>(codePoint));
        }
        bytes.remove_prefix(length);
    }
    return result;
}

void AppendUtf8(std::string& result, char32_t codePoint)
{
    if (codePoint < 0x80) {
        result.push_back(static_cast<char>(codePoint));
    } else if (codePoint < 0x800) {
        result.push_back(static_cast<char>(0xC0 | (codePoint >> 6)));
        result.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    } else if (codePoint < 0x10000) {
        result.push_back(static_cast<char>(0xE0 | (codePoint >> 12)));
        result.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
        result.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    } else {
        result.push_back(static_cast<char>(0xF0 | (codePoint >> 18)));
        result.push_back(static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F)));
        result.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
        result.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    }
}

// Encodes UTF-16 as UTF-8; each lone surrogate is handed to lone, which
// appends what stands for it.
template <typename Lone>
std::string Encode(std::u16string_view text, Lone lone)
{
    // Paths are mostly ASCII: their leading run is copied a unit a byte,
    // the rest is encoded as it comes.
    std::size_t ascii = 0;
    while (ascii < text.size() && text[ascii] < 0x80)
        ++ascii;
    std::string result(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(ascii));
    if (ascii == text.size())
        return result;
    result.reserve(text.size() + text.size() / 2);
    for (std::size_t i = ascii; i < text.size(); ++i) {
        char32_t codePoint = text[i];
        if (codePoint >= 0xD800 && codePoint <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
            lone(result, static_cast<char16_t>(codePoint));
            continue;
        }
        AppendUtf8(result, codePoint);
    }
    return result;
}

} // namespace

std::u16string Utf8ToWide(std::string_view bytes)
{
    return Decode(bytes, [](unsigned char) { return kReplacement; });
}

std::string WideToUtf8(std::u16string_view text)
{
    return Encode(text, [](std::string& result, char16_t) { AppendUtf8(result, kReplacement); });
}

std::u16string PathUtf8ToWide(std::string_view bytes)
{
    // Only bytes from 0x80 up start no sequence: ASCII always decodes.
    return Decode(bytes, [](unsigned char byte) { return static_cast<char16_t>(0xDC00 + byte); });
}

std::string WideToPathUtf8(std::u16string_view text)
{
    // A high surrogate never stands alone in what PathUtf8ToWide gives, so
    // a pair is always a character and never an escaped byte behind another.
    return Encode(text, [](std::string& result, char16_t unit) {
        if (unit >= 0xDC80 && unit <= 0xDCFF)
            result.push_back(static_cast<char>(unit - 0xDC00));
        else
            AppendUtf8(result, kReplacement);
    });
}
