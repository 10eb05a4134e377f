#include "ProgramProcess.h"

namespace {

struct WindowSearch {
    DWORD processId;
    HWND found;
};

BOOL CALLBACK MatchWindow(HWND hwnd, LPARAM parameter)
{
    auto* search = reinterpret_cast<WindowSearch*>(parameter);
    DWORD owner = 0;
    GetWindowThreadProcessId(hwnd, &owner);
    wchar_t title[64] = {};
    GetWindowTextW(hwnd, title, 64);
    if (owner == search->processId && std::wstring(title) == L"Sondara") {
        search->found = hwnd;
        return FALSE;
    }
    return TRUE;
}

} // namespace

std::wstring ProgramProcess::ProgramPath()
{
    wchar_t own[MAX_PATH] = {};
    DWORD length = GetModuleFileNameW(nullptr, own, MAX_PATH);
    std::wstring path(own, length);
    return path.substr(0, path.find_last_of(L"\\/") + 1) + L"Sondara.exe";
}

std::vector<unsigned char> ProgramProcess::Resource(LPCWSTR type, LPCWSTR name)
{
    HMODULE module =
        LoadLibraryExW(ProgramPath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    if (module == nullptr)
        return {};
    std::vector<unsigned char> bytes;
    if (HRSRC resource = FindResourceW(module, name, type)) {
        const auto* data = static_cast<const unsigned char*>(LockResource(LoadResource(module, resource)));
        bytes.assign(data, data + SizeofResource(module, resource));
    }
    FreeLibrary(module);
    return bytes;
}

ProgramProcess::ProgramProcess(const std::wstring& arguments)
{
    std::wstring path = ProgramPath();
    std::wstring commandLine = L"\"" + path + L"\"";
    if (!arguments.empty())
        commandLine += L" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    if (!CreateProcessW(path.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process))
        process = {};
}

ProgramProcess::~ProgramProcess()
{
    if (!Started())
        return;
    if (WaitForSingleObject(process.hProcess, 0) == WAIT_TIMEOUT) {
        TerminateProcess(process.hProcess, 99);
        WaitForSingleObject(process.hProcess, 5000);
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
}

HWND ProgramProcess::WaitForWindow(DWORD timeoutMs) const
{
    if (!Started())
        return nullptr;
    DWORD start = GetTickCount();
    for (;;) {
        WindowSearch search{process.dwProcessId, nullptr};
        EnumWindows(MatchWindow, reinterpret_cast<LPARAM>(&search));
        if (search.found != nullptr && IsWindowVisible(search.found))
            return search.found;
        if (GetTickCount() - start > timeoutMs || WaitForSingleObject(process.hProcess, 0) == WAIT_OBJECT_0)
            return nullptr;
        Sleep(50);
    }
}

DWORD ProgramProcess::WaitForExit(DWORD timeoutMs) const
{
    if (!Started() || WaitForSingleObject(process.hProcess, timeoutMs) != WAIT_OBJECT_0)
        return STILL_ACTIVE;
    DWORD exitCode = STILL_ACTIVE;
    GetExitCodeProcess(process.hProcess, &exitCode);
    return exitCode;
}
