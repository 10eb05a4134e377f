#include "platform/TextCodec.h"

#include "platform/win32/WinText.h"

#include <windows.h>

#include <climits>

namespace platform {

std::u16string ThreadBytesToWide(const char* bytes, std::size_t count)
{
    std::u16string result;
    // MultiByteToWideChar takes an int count, so text beyond 1 GiB goes in
    // pieces; a character split at such a seam comes out as two replacements.
    while (count > 0) {
        int piece = count > INT_MAX / 2 ? INT_MAX / 2 : static_cast<int>(count);
        int needed = MultiByteToWideChar(CP_THREAD_ACP, 0, bytes, piece, nullptr, 0);
        if (needed <= 0)
            break;
        std::size_t start = result.size();
        result.resize(start + static_cast<std::size_t>(needed));
        MultiByteToWideChar(CP_THREAD_ACP, 0, bytes, piece, reinterpret_cast<wchar_t*>(&result[start]), needed);
        bytes += piece;
        count -= static_cast<std::size_t>(piece);
    }
    return result;
}

std::string WideToThreadBytes(std::u16string_view text, bool& lossy)
{
    lossy = false;
    if (text.empty())
        return {};
    const wchar_t* wide = reinterpret_cast<const wchar_t*>(text.data());
    int length = static_cast<int>(text.size());
    BOOL usedDefault = FALSE;
    int needed = WideCharToMultiByte(CP_THREAD_ACP, 0, wide, length, nullptr, 0, nullptr, &usedDefault);
    if (needed <= 0) {
        lossy = true;
        return {};
    }
    std::string result(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_THREAD_ACP, 0, wide, length, result.data(), needed, nullptr, &usedDefault);
    lossy = usedDefault != FALSE;
    return result;
}

} // namespace platform
