#include "platform/Console.h"

#include <string>
#include <windows.h>

namespace platform {

const char* const kLineEnd = "\r\n";

namespace {

// The error of the write that failed, 0 when every byte went.
DWORD WriteAll(DWORD which, std::string_view bytes)
{
    HANDLE stream = GetStdHandle(which);
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

} // namespace

bool WriteToStandardOutput(std::string_view bytes, std::string& failure)
{
    const DWORD error = WriteAll(STD_OUTPUT_HANDLE, bytes);
    // A pipe whose reader has gone.
    const bool readerGone = error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE;
    failure = error == 0 || readerGone ? "" : "system error " + std::to_string(error);
    return error == 0;
}

void WriteToStandardError(std::string_view bytes)
{
    WriteAll(STD_ERROR_HANDLE, bytes);
}

std::int64_t ReadFromStandardInput(void* destination, std::uint32_t count)
{
    DWORD got = 0;
    if (!ReadFile(GetStdHandle(STD_INPUT_HANDLE), destination, count, &got, nullptr))
        return GetLastError() == ERROR_BROKEN_PIPE ? 0 : -1;
    return got;
}

// A pipe brings UTF-8, which is what the programs that list paths write; a
// console brings bytes of its own code page.
std::u16string StandardInputToWide(std::string_view bytes)
{
    if (bytes.empty())
        return {};
    const UINT codePage = GetFileType(GetStdHandle(STD_INPUT_HANDLE)) == FILE_TYPE_CHAR ? GetConsoleCP() : CP_UTF8;
    const int length = MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()), wide.data(), length);
    return std::u16string(wide.begin(), wide.end());
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
