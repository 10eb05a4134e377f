#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Conversion between bytes and UTF-16 text.
namespace platform {

// Bytes in the character set of the calling thread (its ANSI code page on
// Windows, the locale's character set elsewhere) to UTF-16. Bytes that form
// no character come out as a replacement character; a zero byte is a
// character like any other.
std::u16string ThreadBytesToWide(const char* bytes, std::size_t count);

// UTF-16 to bytes in the character set of the calling thread. Characters
// that the set can't hold come out as a default character; whether any did
// is told by lossy.
std::string WideToThreadBytes(std::u16string_view text, bool& lossy);

} // namespace platform
