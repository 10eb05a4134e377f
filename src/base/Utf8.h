#pragma once

#include <string>
#include <string_view>

// UTF-8 and UTF-16, the same on every platform: paths on POSIX, and console
// and pipe output everywhere.

// UTF-8 to UTF-16. Each byte that starts no valid sequence becomes U+FFFD.
std::u16string Utf8ToWide(std::string_view bytes);

// UTF-16 to UTF-8. Lone surrogates become U+FFFD.
std::string WideToUtf8(std::u16string_view text);

// The bytes of a path as UTF-16, losing none: each byte that starts no valid
// UTF-8 sequence (0x80 to 0xFF) becomes the lone surrogate U+DC80 to U+DCFF,
// the form other tools know as "surrogateescape".
std::u16string PathUtf8ToWide(std::string_view bytes);

// Back to the bytes: a lone U+DC80 to U+DCFF becomes its byte again, every
// other character its UTF-8; other lone surrogates, which no path of bytes
// gives, become U+FFFD. WideToPathUtf8(PathUtf8ToWide(b)) == b for all b.
std::string WideToPathUtf8(std::u16string_view text);
