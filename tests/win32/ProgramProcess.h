#pragma once

#include <windows.h>

#include <string>

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

private:
    PROCESS_INFORMATION process{};
};
