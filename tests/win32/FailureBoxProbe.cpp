#include "support/FailureBoxProbe.h"

#include <cwchar>
#include <string>

#include <windows.h>

namespace {

// The class and the text control of the system's message boxes.
constexpr wchar_t kDialogClass[] = L"#32770";
constexpr int kMessageTextId = 0xFFFF;

HWND openBox = nullptr;

BOOL CALLBACK FindOwnDialog(HWND window, LPARAM found)
{
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    wchar_t className[16] = {};
    GetClassNameW(window, className, 16);
    if (process != GetCurrentProcessId() || !IsWindowVisible(window) || std::wcscmp(className, kDialogClass) != 0)
        return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

std::u16string TextOf(HWND window)
{
    if (!window)
        return {};
    std::wstring text(GetWindowTextLengthW(window) + 1, L'\0');
    text.resize(GetWindowTextW(window, text.data(), static_cast<int>(text.size())));
    return std::u16string(text.begin(), text.end());
}

} // namespace

void ExpectFailureBoxes() {}

bool WaitForFailureBox(FailureBox& box)
{
    for (int attempt = 0; attempt < 1000; ++attempt) {
        HWND found = nullptr;
        EnumWindows(FindOwnDialog, reinterpret_cast<LPARAM>(&found));
        if (found) {
            openBox = found;
            box = {TextOf(GetDlgItem(found, kMessageTextId)), TextOf(found)};
            return true;
        }
        Sleep(10);
    }
    return false;
}

void CloseFailureBox()
{
    PostMessageW(openBox, WM_COMMAND, IDOK, 0);
    for (int attempt = 0; attempt < 1000 && IsWindow(openBox); ++attempt)
        Sleep(10);
    openBox = nullptr;
}
