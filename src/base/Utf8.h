#pragma once

#include <string>
#include <string_view>

// UTF-8 and UTF-16, the same on every platform: paths on POSIX, and console
// and pipe output everywhere.

// UTF-8 to UTF-16. Each byte that starts no valid sequence becomes U+FFFD.
std::u16string Utf8ToWide(std::string_view bytes);

// UTF-16 to UTF-8. Lone surrogates become U+FFFD.
std::string WideToUtf8(std::u16string_view text);
