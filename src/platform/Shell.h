#pragma once

#include "platform/Window.h"

#include <cstdint>
#include <string>
#include <string_view>

// What the desktop shell and the common dialogs give a window: the files
// dropped on it, the open-file dialog and message boxes of its own.
// Called on the thread of the window.
namespace platform {

// The files of a drop message, by the handle in its wParam. The handle is
// the receiver's to finish.
std::uint32_t CountDroppedFiles(std::uintptr_t drop);
std::u16string GetDroppedFile(std::uintptr_t drop, std::uint32_t index);
void FinishDrop(std::uintptr_t drop);

// The modal open-file dialog of the system, owned by owner: filter holds
// pairs of a caption and a pattern, each ended by a zero unit, with one
// more zero at the end. At most maxPath units of path. False, with path
// empty, when the user cancelled or the dialog failed.
bool ShowOpenFileDialog(WindowHandle owner, std::u16string_view filter, std::u16string_view defaultExtension,
                        std::u16string_view title, std::size_t maxPath, std::u16string& path);

// Hands file, an address say, to the shell with verb ("open") and the show
// command; the shell's result, 32 or more on success.
std::intptr_t OpenWithShell(WindowHandle owner, std::u16string_view verb, std::u16string_view file,
                            int showCommand);

// A modal message box owned by owner; the id of the button that closed it.
std::int32_t ShowMessageBox(WindowHandle owner, std::u16string_view text, std::u16string_view caption,
                            std::uint32_t type);

} // namespace platform
