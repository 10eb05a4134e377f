#include "platform/Console.h"

#include <string>
#include <windows.h>

namespace platform {

const char* const kLineEnd = "\r\n";

namespace {

void WriteAll(DWORD which, std::string_view bytes)
{
    HANDLE stream = GetStdHandle(which);
    while (!bytes.empty()) {
        DWORD written = 0;
        DWORD piece = bytes.size() > 0x100000 ? 0x100000 : static_cast<DWORD>(bytes.size());
        if (!WriteFile(stream, bytes.data(), piece, &written, nullptr) || written == 0)
            return;
        bytes.remove_prefix(written);
    }
}

} // namespace

void WriteToStandardOutput(std::string_view bytes)
{
    WriteAll(STD_OUTPUT_HANDLE, bytes);
}

void WriteToStandardError(std::string_view bytes)
{
    WriteAll(STD_ERROR_HANDLE, bytes);
}

// Lines that come through a pipe are read as UTF-8, which is what the
// programs that list paths write; a console gives its own code page, which
// ReadFile hands over as bytes of that page.
bool ReadStandardInputLine(std::u16string& line)
{
    static std::string pending;
    static bool ended = false;
    for (;;) {
        const std::size_t end = pending.find('\n');
        if (end != std::string::npos || (ended && !pending.empty())) {
            std::string bytes = pending.substr(0, end);
            pending.erase(0, end == std::string::npos ? pending.size() : end + 1);
            if (!bytes.empty() && bytes.back() == '\r')
                bytes.pop_back();
            const UINT codePage = GetFileType(GetStdHandle(STD_INPUT_HANDLE)) == FILE_TYPE_CHAR ? GetConsoleCP() : CP_UTF8;
            line.clear();
            if (!bytes.empty()) {
                const int length = MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
                std::wstring wide(static_cast<std::size_t>(length), L'\0');
                MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()), wide.data(), length);
                line.assign(wide.begin(), wide.end());
            }
            return true;
        }
        if (ended)
            return false;
        char buffer[65536];
        DWORD count = 0;
        if (!ReadFile(GetStdHandle(STD_INPUT_HANDLE), buffer, sizeof buffer, &count, nullptr) || count == 0)
            ended = true;
        else
            pending.append(buffer, count);
    }
}

bool IsStandardErrorTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

} // namespace platform
