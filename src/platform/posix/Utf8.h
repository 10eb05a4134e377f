#pragma once

#include <string>
#include <string_view>

namespace platform::posix {

// UTF-8 to UTF-16. Each byte that starts no valid sequence becomes U+FFFD.
std::u16string Utf8ToWide(std::string_view bytes);

} // namespace platform::posix
