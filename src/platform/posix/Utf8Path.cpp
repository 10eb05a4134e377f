#include "platform/posix/Utf8Path.h"

#include "base/Utf8.h"

namespace platform::posix {

std::string PathToBytes(std::u16string_view path)
{
    return WideToPathUtf8(path);
}

std::u16string PathFromBytes(std::string_view bytes)
{
    return PathUtf8ToWide(bytes);
}

} // namespace platform::posix
