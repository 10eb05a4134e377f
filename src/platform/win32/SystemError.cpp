#include "platform/SystemError.h"

#include "platform/win32/WinText.h"

#include <windows.h>

namespace platform {

namespace {

// The buffer that FormatMessageW allocates for its text.
struct LocalText {
    wchar_t* text = nullptr;

    LocalText() = default;
    LocalText(const LocalText&) = delete;
    LocalText& operator=(const LocalText&) = delete;
    ~LocalText()
    {
        if (text)
            LocalFree(text);
    }
};

} // namespace

// The text in the user's language as the system formats it, usually with a
// line end of its own; empty when the system has none for the code.
std::u16string SystemErrorMessage(std::uint32_t code)
{
    constexpr DWORD kFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    constexpr DWORD kUserDefaultLanguage = MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT);
    static_assert(kFlags == 0x1300 && kUserDefaultLanguage == 0x400);

    LocalText buffer;
    const DWORD length = FormatMessageW(kFlags, nullptr, code, kUserDefaultLanguage,
                                        reinterpret_cast<wchar_t*>(&buffer.text), 0, nullptr);
    if (!buffer.text)
        return {};
    return win32::FromWide(buffer.text, length);
}

} // namespace platform
