#include "platform/SystemSettings.h"

#include "platform/win32/WinText.h"

#include <windows.h>

namespace platform {

// The icon font value is read as one font description record. It holds no
// pointer, so it is 92 bytes in every build, the size the value has on disk.
static_assert(sizeof(LOGFONTW) == 92, "a LOGFONTW is 92 bytes");

std::uint32_t GetSystemColour(int index)
{
    return GetSysColor(index);
}

int GetScreenDpiX()
{
    HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi;
}

bool ReadUserRegistryValue(std::u16string_view keyPath, std::u16string_view valueName, std::uint32_t& type,
                           std::vector<std::uint8_t>& data)
{
    type = 0;
    data.clear();
    const std::u16string key(keyPath);
    const std::u16string name(valueName);
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, win32::Wide(key), 0, KEY_READ, &opened) != ERROR_SUCCESS)
        return false;
    // The first query asks for the length, the second reads; a value that
    // grows in between fails the second and reads as missing.
    DWORD valueType = 0;
    DWORD length = 0;
    bool read = RegQueryValueExW(opened, win32::Wide(name), nullptr, &valueType, nullptr, &length) == ERROR_SUCCESS;
    if (read) {
        data.resize(length);
        read = RegQueryValueExW(opened, win32::Wide(name), nullptr, &valueType, data.data(), &length) == ERROR_SUCCESS;
    }
    RegCloseKey(opened);
    if (!read) {
        data.clear();
        return false;
    }
    data.resize(length);
    type = valueType;
    return true;
}

} // namespace platform
