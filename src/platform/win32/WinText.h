#pragma once

#include <string>
#include <string_view>

// Between the platform's char16_t text and the wide text of the Win32 API;
// on Windows both are UTF-16 units of the same size.
namespace platform::win32 {

inline const wchar_t* Wide(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }
inline std::u16string FromWide(const wchar_t* text, std::size_t length)
{
    return std::u16string(reinterpret_cast<const char16_t*>(text), length);
}

// Text for GDI+ to lay out, ending in a zero unit: a CR LF goes as a lone
// LF. GDI+ breaks lines at the LF either way, but Wine's draws the CR as a
// missing glyph at the end of every line of a report.
inline std::u16string LayoutText(std::u16string_view text)
{
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            continue;
        result.push_back(text[i]);
    }
    return result;
}

} // namespace platform::win32
