#include "platform/TextCodec.h"

#include "base/Utf8.h"

#include <cerrno>
#include <cstring>
#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

namespace platform {

namespace {

// The character set of the environment's locale (LC_ALL, LC_CTYPE, LANG),
// read once without changing the process's own locale. The C locale and a
// locale that can't be made count as UTF-8.
const std::string& LocaleCharset()
{
    static const std::string charset = [] {
        std::string name = "UTF-8";
        locale_t locale = newlocale(LC_CTYPE_MASK, "", static_cast<locale_t>(0));
        if (locale) {
            const char* codeset = nl_langinfo_l(CODESET, locale);
            if (codeset && *codeset && std::strcmp(codeset, "ANSI_X3.4-1968") != 0)
                name = codeset;
            freelocale(locale);
        }
        return name;
    }();
    return charset;
}

bool IsUtf8(const std::string& charset)
{
    return charset == "UTF-8" || charset == "utf8" || charset == "UTF8";
}

std::u16string ConvertWithIconv(const std::string& charset, const char* bytes, std::size_t count)
{
    iconv_t converter = iconv_open("UTF-16LE", charset.c_str());
    if (converter == reinterpret_cast<iconv_t>(-1))
        return Utf8ToWide(std::string_view(bytes, count));
    std::u16string result;
    char16_t buffer[4096];
    char* in = const_cast<char*>(bytes);
    std::size_t inLeft = count;
    while (inLeft > 0) {
        char* out = reinterpret_cast<char*>(buffer);
        std::size_t outLeft = sizeof buffer;
        std::size_t done = iconv(converter, &in, &inLeft, &out, &outLeft);
        result.append(buffer, static_cast<std::size_t>(out - reinterpret_cast<char*>(buffer)) / sizeof(char16_t));
        if (done == static_cast<std::size_t>(-1) && errno != E2BIG) {
            // An invalid or cut-off sequence: one replacement for its first byte.
            result.push_back(0xFFFD);
            ++in;
            --inLeft;
            iconv(converter, nullptr, nullptr, nullptr, nullptr);
        }
    }
    iconv_close(converter);
    return result;
}

std::string ConvertToCharset(const std::string& charset, std::u16string_view text, bool& lossy)
{
    iconv_t converter = iconv_open(charset.c_str(), "UTF-16LE");
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        lossy = true;
        return {};
    }
    std::string result;
    char buffer[4096];
    char* in = const_cast<char*>(reinterpret_cast<const char*>(text.data()));
    std::size_t inLeft = text.size() * sizeof(char16_t);
    while (inLeft > 0) {
        char* out = buffer;
        std::size_t outLeft = sizeof buffer;
        std::size_t done = iconv(converter, &in, &inLeft, &out, &outLeft);
        result.append(buffer, static_cast<std::size_t>(out - buffer));
        if (done == static_cast<std::size_t>(-1) && errno != E2BIG) {
            // A unit the set can't hold: a default character in its place.
            lossy = true;
            result.push_back('?');
            in += sizeof(char16_t);
            inLeft -= inLeft < sizeof(char16_t) ? inLeft : sizeof(char16_t);
            iconv(converter, nullptr, nullptr, nullptr, nullptr);
        }
    }
    iconv_close(converter);
    return result;
}

} // namespace

std::string WideToThreadBytes(std::u16string_view text, bool& lossy)
{
    lossy = false;
    const std::string& charset = LocaleCharset();
    if (IsUtf8(charset))
        return WideToUtf8(text);
    return ConvertToCharset(charset, text, lossy);
}

std::u16string ThreadBytesToWide(const char* bytes, std::size_t count)
{
    if (count == 0)
        return {};
    const std::string& charset = LocaleCharset();
    if (IsUtf8(charset))
        return Utf8ToWide(std::string_view(bytes, count));
    return ConvertWithIconv(charset, bytes, count);
}

} // namespace platform
