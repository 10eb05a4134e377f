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

} // namespace platform::win32
