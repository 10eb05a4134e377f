#include "platform/Console.h"

#include "base/Utf8.h"

#include <mutex>
#include <string>
#include <windows.h>

#ifndef ENABLE_VIRTUAL_TERMINAL_PROCESSING
#define ENABLE_VIRTUAL_TERMINAL_PROCESSING 0x0004
#endif

namespace platform {

const char* const kLineEnd = "\r\n";

namespace {

// The sequence that clears a line from the cursor to its end, which the
// progress line writes behind "\r".
constexpr std::string_view kClearToLineEnd = "\x1b[K";

// The error of the write that failed, 0 when every byte went.
DWORD WriteAll(HANDLE stream, std::string_view bytes)
{
    while (!bytes.empty()) {
        DWORD written = 0;
        DWORD piece = bytes.size() > 0x100000 ? 0x100000 : static_cast<DWORD>(bytes.size());
        if (!WriteFile(stream, bytes.data(), piece, &written, nullptr))
            return GetLastError();
        if (written == 0)
            return ERROR_WRITE_FAULT;
        bytes.remove_prefix(written);
    }
    return 0;
}

// Characters to a console, in pieces it takes at once (older consoles refuse
// one write of more than about 64 KiB), never parting a surrogate pair.
DWORD WriteAllWide(HANDLE console, std::u16string_view text)
{
    while (!text.empty()) {
        std::size_t piece = text.size() > 8192 ? 8192 : text.size();
        if (piece < text.size() && text[piece - 1] >= 0xD800 && text[piece - 1] <= 0xDBFF)
            --piece;
        DWORD written = 0;
        if (!WriteConsoleW(console, text.data(), static_cast<DWORD>(piece), &written, nullptr))
            return GetLastError();
        if (written == 0)
            return ERROR_WRITE_FAULT;
        text.remove_prefix(written);
    }
    return 0;
}

// The length of bytes without a UTF-8 sequence cut at their end, which
// waits for the rest in the next write rather than showing as U+FFFD.
std::size_t WithoutCutSequence(std::string_view bytes)
{
    for (std::size_t back = 1; back <= 3 && back <= bytes.size(); ++back) {
        const unsigned char unit = static_cast<unsigned char>(bytes[bytes.size() - back]);
        if ((unit & 0xC0) == 0x80)
            continue;
        const std::size_t length = unit >= 0xF0 ? 4 : unit >= 0xE0 ? 3 : unit >= 0xC0 ? 2 : 1;
        return length > back && unit < 0xF8 ? bytes.size() - back : bytes.size();
    }
    return bytes.size();
}

// Blanks the console's line from the cursor to its end, without moving the
// cursor: what "\x1b[K" does where virtual terminal processing is on.
void ClearToLineEnd(HANDLE console)
{
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(console, &info) || info.dwCursorPosition.X >= info.dwSize.X)
        return;
    const DWORD count = static_cast<DWORD>(info.dwSize.X - info.dwCursorPosition.X);
    DWORD done = 0;
    FillConsoleOutputCharacterW(console, L' ', count, info.dwCursorPosition, &done);
    FillConsoleOutputAttribute(console, info.wAttributes, count, info.dwCursorPosition, &done);
}

// True when the console shows escape sequences rather than printing them.
// The first write to a console (known by its window) switches virtual
// terminal processing on; consoles before Windows 10 refuse it, and are
// not asked again. Called with standard error's lock held.
bool ShowsEscapes(HANDLE console)
{
    static HWND asked = reinterpret_cast<HWND>(-1);
    DWORD mode = 0;
    if (!GetConsoleMode(console, &mode))
        return false;
    if (GetConsoleWindow() != asked) {
        asked = GetConsoleWindow();
        if ((mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) == 0 &&
            SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING))
            mode |= ENABLE_VIRTUAL_TERMINAL_PROCESSING;
    }
    return (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

// One standard stream: its handle, and, when it is a console, the start of
// a UTF-8 sequence that the last write cut.
struct Stream {
    DWORD which;
    std::mutex lock;
    std::string held;
};

Stream standardOutput{STD_OUTPUT_HANDLE, {}, {}};
Stream standardError{STD_ERROR_HANDLE, {}, {}};

// Bytes go unchanged to a pipe or a file. A console takes characters: the
// UTF-8 is converted, so that it shows whatever the console's code page.
// On standard error, where consoles can't show "\x1b[K", the line is
// cleared with the console's own calls instead.
DWORD WriteToStream(Stream& stream, std::string_view bytes)
{
    HANDLE handle = GetStdHandle(stream.which);
    DWORD mode = 0;
    if (!GetConsoleMode(handle, &mode))
        return WriteAll(handle, bytes);
    std::lock_guard<std::mutex> hold(stream.lock);
    std::string text = stream.held + std::string(bytes);
    const std::size_t whole = WithoutCutSequence(text);
    stream.held = text.substr(whole);
    text.resize(whole);
    if (stream.which != STD_ERROR_HANDLE || ShowsEscapes(handle))
        return WriteAllWide(handle, Utf8ToWide(text));
    std::string_view rest = text;
    for (;;) {
        const std::size_t clear = rest.find(kClearToLineEnd);
        if (const DWORD error = WriteAllWide(handle, Utf8ToWide(rest.substr(0, clear))))
            return error;
        if (clear == std::string_view::npos)
            return 0;
        ClearToLineEnd(handle);
        rest.remove_prefix(clear + kClearToLineEnd.size());
    }
}

// Converts bytes of codePage; false when flags refuse them or the code page
// is unknown.
bool ConvertFrom(UINT codePage, DWORD flags, std::string_view bytes, std::u16string& text)
{
    const int length = MultiByteToWideChar(codePage, flags, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
    if (length <= 0)
        return false;
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(codePage, flags, bytes.data(), static_cast<int>(bytes.size()), wide.data(), length);
    text.assign(wide.begin(), wide.end());
    return true;
}

} // namespace

bool WriteToStandardOutput(std::string_view bytes, std::string& failure)
{
    const DWORD error = WriteToStream(standardOutput, bytes);
    // A pipe whose reader has gone.
    const bool readerGone = error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE;
    failure = error == 0 || readerGone ? "" : "system error " + std::to_string(error);
    return error == 0;
}

void WriteToStandardError(std::string_view bytes)
{
    WriteToStream(standardError, bytes);
}

std::int64_t ReadFromStandardInput(void* destination, std::uint32_t count)
{
    DWORD got = 0;
    if (!ReadFile(GetStdHandle(STD_INPUT_HANDLE), destination, count, &got, nullptr))
        return GetLastError() == ERROR_BROKEN_PIPE ? 0 : -1;
    return got;
}

// A console brings bytes of its own input code page. A pipe brings UTF-8
// from the programs that list paths, but cmd's own (dir /b, type) write the
// console's code page, CP932 on Japanese Windows: a line that isn't valid
// UTF-8 is read in that code page, or in the OEM code page, which cmd uses,
// when the program has no console.
std::u16string StandardInputToWide(std::string_view bytes)
{
    std::u16string text;
    if (bytes.empty())
        return text;
    if (GetFileType(GetStdHandle(STD_INPUT_HANDLE)) != FILE_TYPE_CHAR &&
        ConvertFrom(CP_UTF8, MB_ERR_INVALID_CHARS, bytes, text))
        return text;
    const UINT console = GetConsoleCP();
    if (ConvertFrom(console != 0 ? console : GetOEMCP(), 0, bytes, text))
        return text;
    return Utf8ToWide(bytes);
}

bool IsStandardErrorTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

bool IsStandardOutputTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

} // namespace platform
