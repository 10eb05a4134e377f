#include "platform/DesktopMessageBox.h"

#include "platform/win32/WinText.h"

#include <string>

#include <windows.h>

namespace platform {

// Returns when the user has closed the box: the id of the button, or 0 when
// the box could not be shown.
std::int32_t ShowDesktopMessageBox(std::u16string_view text, std::u16string_view caption, std::uint32_t type)
{
    const std::u16string terminatedText(text);
    const std::u16string terminatedCaption(caption);
    return MessageBoxW(GetDesktopWindow(), win32::Wide(terminatedText), win32::Wide(terminatedCaption), type);
}

} // namespace platform
