#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Sondara.exe, beside this test program, started as a separate process for
// one test and ended by the test; a process still running at the end is
// terminated.
class ProgramProcess {
public:
    explicit ProgramProcess(const std::wstring& arguments = L"");
    ~ProgramProcess();
    ProgramProcess(const ProgramProcess&) = delete;
    ProgramProcess& operator=(const ProgramProcess&) = delete;

    bool Started() const { return process.hProcess != nullptr; }
    // The process's top-level window titled "Sondara", polling until it
    // appears; null when it didn't within timeoutMs.
    HWND WaitForWindow(DWORD timeoutMs = 20000) const;
    // The exit code once the process has ended, or STILL_ACTIVE when it
    // hasn't within timeoutMs.
    DWORD WaitForExit(DWORD timeoutMs = 20000) const;

    static std::wstring ProgramPath();
    // The bytes of one of the program's resources, read from its file as
    // the system reads them; empty when it has none.
    static std::vector<unsigned char> Resource(LPCWSTR type, LPCWSTR name);

private:
    PROCESS_INFORMATION process{};
};
