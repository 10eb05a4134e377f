#include "platform/VersionResource.h"

#include "platform/win32/WinText.h"

#include <windows.h>

namespace platform {

std::uint32_t GetVersionBlockSize(std::u16string_view path)
{
    const std::u16string terminated(path);
    DWORD handle = 0;
    return GetFileVersionInfoSizeW(win32::Wide(terminated), &handle);
}

bool ReadVersionBlock(std::u16string_view path, std::uint8_t* data, std::uint32_t size)
{
    const std::u16string terminated(path);
    return GetFileVersionInfoW(win32::Wide(terminated), 0, size, data) != FALSE;
}

// The value's length as the system gives it, in units, may count a closing
// zero; the text ends at the first zero either way.
bool QueryVersionText(const std::uint8_t* block, std::u16string_view subBlock, std::u16string& text)
{
    const std::u16string terminated(subBlock);
    void* value = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block, win32::Wide(terminated), &value, &length) || value == nullptr)
        return false;
    const auto* units = static_cast<const wchar_t*>(value);
    UINT end = 0;
    while (end < length && units[end] != L'\0')
        ++end;
    text = win32::FromWide(units, end);
    return true;
}

} // namespace platform
