#pragma once

#include <string>
#include <string_view>

// Paths of the system as UTF-16 are handed to POSIX as UTF-8 bytes.
namespace platform::posix {

std::string PathToBytes(std::u16string_view path);
std::u16string PathFromBytes(std::string_view bytes);

} // namespace platform::posix
