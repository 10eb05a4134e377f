#include "wave/MetadataText.h"

#include "wave/Cp932Table.h"

namespace {

constexpr char16_t kUndefined = 0xFFFF;

bool AllAscii(BodySpan bytes)
{
    for (std::uint8_t byte : bytes) {
        if (byte >= 0x80)
            return false;
    }
    return true;
}

void AppendUnit(std::u16string& text, std::uint32_t codePoint)
{
    if (codePoint >= 0x10000) {
        codePoint -= 0x10000;
        text += static_cast<char16_t>(0xD800 + (codePoint >> 10));
        text += static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
    } else {
        text += static_cast<char16_t>(codePoint);
    }
}

// Latin-1 fits text without control characters other than tab and line
// ends: the C1 controls (0x80 to 0x9F) are what other code pages put there.
std::optional<std::u16string> DecodeLatin1(BodySpan bytes)
{
    std::u16string text;
    for (std::uint8_t byte : bytes) {
        const bool control = (byte < 0x20 && byte != '\t' && byte != '\r' && byte != '\n') || (byte >= 0x7F && byte < 0xA0);
        if (control)
            return std::nullopt;
        text += static_cast<char16_t>(byte);
    }
    return text;
}

// Printable ASCII as it is, a backslash doubled, every other byte as \xNN.
std::u16string Escaped(BodySpan bytes)
{
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::u16string text;
    for (std::uint8_t byte : bytes) {
        if (byte == '\\') {
            text += u"\\\\";
        } else if (byte >= 0x20 && byte < 0x7F) {
            text += static_cast<char16_t>(byte);
        } else {
            text += u"\\x";
            text += static_cast<char16_t>(kHex[byte >> 4]);
            text += static_cast<char16_t>(kHex[byte & 15]);
        }
    }
    return text;
}

BodySpan WithoutEndingZeros(BodySpan bytes)
{
    while (!bytes.empty() && bytes.back() == 0)
        bytes = bytes.first(bytes.size() - 1);
    return bytes;
}

MetadataText ByCodePage(BodySpan bytes, std::uint16_t codePage)
{
    MetadataText result;
    result.codePage = codePage;
    bool wide = false;
    std::optional<std::u16string> text;
    if (codePage == 65001) {
        text = DecodeUtf8Strict(bytes, wide);
        result.encoding = TextEncoding::Utf8;
    } else if (codePage == 932) {
        text = DecodeCp932(bytes, wide);
        result.encoding = TextEncoding::Cp932;
    } else if (codePage == 1252 || codePage == 28591) {
        text = DecodeLatin1(bytes);
        result.encoding = TextEncoding::Latin1;
    } else {
        result.codePageUnread = true;
    }
    if (text) {
        result.text = std::move(*text);
    } else {
        result.text = Escaped(bytes);
        result.encoding = TextEncoding::Escaped;
    }
    return result;
}

} // namespace

// Overlong forms, surrogates and code points past U+10FFFF are not valid.
std::optional<std::u16string> DecodeUtf8Strict(BodySpan bytes, bool& hasWide)
{
    std::u16string text;
    for (std::size_t i = 0; i < bytes.size();) {
        const std::uint8_t lead = bytes[i];
        if (lead < 0x80) {
            text += static_cast<char16_t>(lead);
            ++i;
            continue;
        }
        const std::size_t length = lead >= 0xC2 && lead <= 0xDF ? 2 : lead >= 0xE0 && lead <= 0xEF ? 3
                                 : lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
        if (length == 0 || i + length > bytes.size())
            return std::nullopt;
        std::uint32_t codePoint = lead & (0x7F >> length);
        for (std::size_t k = 1; k < length; ++k) {
            if ((bytes[i + k] & 0xC0) != 0x80)
                return std::nullopt;
            codePoint = codePoint << 6 | (bytes[i + k] & 0x3F);
        }
        const std::uint32_t least = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
        if (codePoint < least || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
            return std::nullopt;
        AppendUnit(text, codePoint);
        hasWide = true;
        i += length;
    }
    return text;
}

std::optional<std::u16string> DecodeCp932(BodySpan bytes, bool& hasWide)
{
    std::u16string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::uint8_t byte = bytes[i];
        const unsigned row = kCp932LeadIndex[byte];
        if (row == 0xFF) {
            if (kCp932Single[byte] == kUndefined)
                return std::nullopt;
            text += kCp932Single[byte];
            continue;
        }
        if (i + 1 >= bytes.size())
            return std::nullopt;
        const char16_t unit = kCp932Pairs[row * 256 + bytes[++i]];
        if (unit == kUndefined)
            return std::nullopt;
        text += unit;
        hasWide = true;
    }
    return text;
}

MetadataText DecodeMetadataText(BodySpan bytes, std::optional<std::uint16_t> codePage)
{
    bytes = WithoutEndingZeros(bytes);
    // A CSET of code page 0 names none.
    if (codePage && *codePage != 0)
        return ByCodePage(bytes, *codePage);
    MetadataText result;
    if (AllAscii(bytes)) {
        result.text.assign(bytes.begin(), bytes.end());
        result.encoding = TextEncoding::Ascii;
        return result;
    }
    bool wide = false;
    if (std::optional<std::u16string> text = DecodeUtf8Strict(bytes, wide); text && wide) {
        result.text = std::move(*text);
        result.encoding = TextEncoding::Utf8;
        return result;
    }
    wide = false;
    if (std::optional<std::u16string> text = DecodeCp932(bytes, wide); text && wide) {
        result.text = std::move(*text);
        result.encoding = TextEncoding::Cp932;
        return result;
    }
    if (std::optional<std::u16string> text = DecodeLatin1(bytes)) {
        result.text = std::move(*text);
        result.encoding = TextEncoding::Latin1;
        return result;
    }
    result.text = Escaped(bytes);
    result.encoding = TextEncoding::Escaped;
    return result;
}

std::string EncodingName(const MetadataText& text)
{
    if (text.codePageUnread)
        return "code page " + std::to_string(*text.codePage) + ", not decoded";
    static const char* const kNames[] = {"ASCII", "UTF-8", "CP932", "Latin-1", "none"};
    std::string name = kNames[static_cast<int>(text.encoding)];
    if (text.codePage)
        name += " by CSET " + std::to_string(*text.codePage);
    return name;
}

bool IsUndecodable(const MetadataText& text)
{
    return text.encoding == TextEncoding::Escaped && !text.codePageUnread;
}
