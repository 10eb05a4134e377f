#pragma once

#include <string>
#include <string_view>

// Paths of the system as UTF-16 are handed to POSIX as the bytes they came
// from: names are bytes there, UTF-8 by custom, and a byte that isn't UTF-8
// travels as a lone surrogate (see PathUtf8ToWide) and comes back unchanged.
namespace platform::posix {

std::string PathToBytes(std::u16string_view path);
std::u16string PathFromBytes(std::string_view bytes);

} // namespace platform::posix
