#include "platform/Console.h"

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

} // namespace platform
