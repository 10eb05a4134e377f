#include "platform/Shell.h"

#include "platform/win32/WinHandles.h"
#include "platform/win32/WinText.h"

#include <windows.h>
#include <commdlg.h>
#include <shellapi.h>

#include <cstddef>
#include <vector>

namespace platform {

namespace {

// The dialog's record comes in two sizes: the long form from Windows 2000 on,
// and the short form, without the fields after lpTemplateName, for older
// systems. Both are the compiler's figures for this build: a 64-bit system
// rejects the 32-bit ones.
constexpr DWORD kLongForm = sizeof(OPENFILENAMEW);
constexpr DWORD kShortForm = sizeof(OPENFILENAME_NT4W);
static_assert(kShortForm == offsetof(OPENFILENAMEW, lpTemplateName) + sizeof(LPCWSTR),
              "the short form ends after lpTemplateName");
#if defined(_WIN32) && !defined(_WIN64)
static_assert(kLongForm == 88, "the long form is 88 bytes on 32-bit Windows");
static_assert(kShortForm == 76, "the short form is 76 bytes on 32-bit Windows");
#endif

DWORD OpenFileNameSize()
{
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    const bool known = GetVersionExW(&version) != FALSE;
#pragma GCC diagnostic pop
    return known && version.dwPlatformId == VER_PLATFORM_WIN32_NT && version.dwMajorVersion >= 5 ? kLongForm
                                                                                                  : kShortForm;
}

// Brings the dialog to the front when it opens; everything else is the
// dialog's own.
UINT_PTR CALLBACK OpenFileHook(HWND dialog, UINT message, WPARAM, LPARAM)
{
    if (message == WM_INITDIALOG)
        SetForegroundWindow(GetParent(dialog) != nullptr ? GetParent(dialog) : dialog);
    return 0;
}

} // namespace

std::uint32_t CountDroppedFiles(std::uintptr_t drop)
{
    return DragQueryFileW(reinterpret_cast<HDROP>(drop), 0xFFFFFFFF, nullptr, 0);
}

std::u16string GetDroppedFile(std::uintptr_t drop, std::uint32_t index)
{
    const UINT length = DragQueryFileW(reinterpret_cast<HDROP>(drop), index, nullptr, 0);
    std::vector<wchar_t> buffer(length + 1);
    const UINT copied = DragQueryFileW(reinterpret_cast<HDROP>(drop), index, buffer.data(), length + 1);
    return win32::FromWide(buffer.data(), copied);
}

void FinishDrop(std::uintptr_t drop)
{
    DragFinish(reinterpret_cast<HDROP>(drop));
}

bool ShowOpenFileDialog(WindowHandle owner, std::u16string_view filter, std::u16string_view defaultExtension,
                        std::u16string_view title, std::size_t maxPath, std::u16string& path)
{
    const std::u16string filterText(filter);
    const std::u16string extension(defaultExtension);
    const std::u16string titleText(title);
    std::vector<wchar_t> file(maxPath + 1, L'\0');

    OPENFILENAMEW record{};
    record.lStructSize = OpenFileNameSize();
    record.hwndOwner = win32::Hwnd(owner);
    record.lpstrFilter = win32::Wide(filterText);
    record.lpstrFile = file.data();
    record.nMaxFile = static_cast<DWORD>(maxPath);
    record.lpstrTitle = win32::Wide(titleText);
    record.lpstrDefExt = win32::Wide(extension);
    record.Flags = OFN_EXPLORER | OFN_ENABLEHOOK | OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT;
    record.lpfnHook = OpenFileHook;
    path.clear();
    if (GetOpenFileNameW(&record) > 0)
        path = win32::FromWide(file.data(), wcslen(file.data()));
    return !path.empty();
}

std::intptr_t OpenWithShell(WindowHandle owner, std::u16string_view verb, std::u16string_view file,
                            int showCommand)
{
    const std::u16string verbText(verb);
    const std::u16string fileText(file);
    return reinterpret_cast<std::intptr_t>(
        ShellExecuteW(win32::Hwnd(owner), win32::Wide(verbText), win32::Wide(fileText), nullptr, nullptr, showCommand));
}

std::int32_t ShowMessageBox(WindowHandle owner, std::u16string_view text, std::u16string_view caption,
                            std::uint32_t type)
{
    const std::u16string textCopy(text);
    const std::u16string captionCopy(caption);
    return MessageBoxW(win32::Hwnd(owner), win32::Wide(textCopy), win32::Wide(captionCopy), type);
}

} // namespace platform
