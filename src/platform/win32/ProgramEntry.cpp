// The entry of the windowed program on Windows: the four values the system
// starts it with, handed on unchanged.
#include "platform/ProgramEntry.h"

#include <windows.h>

#include <cwchar>

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE previousInstance, PWSTR commandLine, int showCommand)
{
    std::u16string_view line;
    if (commandLine != nullptr)
        line = std::u16string_view(reinterpret_cast<const char16_t*>(commandLine), std::wcslen(commandLine));
    return ProgramMain(reinterpret_cast<platform::InstanceHandle>(instance),
                       reinterpret_cast<platform::InstanceHandle>(previousInstance), line, showCommand);
}
