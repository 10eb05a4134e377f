#include "platform/FileSystem.h"

#include "platform/win32/WinText.h"

#include <windows.h>

#include <vector>

namespace platform {

const char16_t kPathSeparator = u'\\';

std::uint32_t GetPathAttributes(std::u16string_view path)
{
    std::u16string terminated(path);
    return GetFileAttributesW(win32::Wide(terminated));
}

std::u16string GetProgramPath(std::size_t maxLength)
{
    std::vector<wchar_t> buffer(maxLength + 1);
    DWORD length = GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(maxLength));
    if (length == 0 || length >= maxLength)
        return {};
    return win32::FromWide(buffer.data(), length);
}

std::u16string GetFullPath(std::u16string_view path)
{
    std::u16string terminated(path);
    DWORD needed = GetFullPathNameW(win32::Wide(terminated), 0, nullptr, nullptr);
    if (needed == 0)
        return {};
    std::vector<wchar_t> buffer(needed);
    DWORD length = GetFullPathNameW(win32::Wide(terminated), needed, buffer.data(), nullptr);
    if (length == 0 || length >= needed)
        return {};
    return win32::FromWide(buffer.data(), length);
}

std::u16string QueryCurrentDirectory(std::size_t maxLength)
{
    std::vector<wchar_t> buffer(maxLength + 1);
    DWORD length = GetCurrentDirectoryW(static_cast<DWORD>(maxLength + 1), buffer.data());
    if (length == 0 || length > maxLength)
        return {};
    return win32::FromWide(buffer.data(), length);
}

bool ChangeCurrentDirectory(std::u16string_view path)
{
    const std::u16string terminated(path);
    return SetCurrentDirectoryW(win32::Wide(terminated)) != FALSE;
}

bool HasDrive(std::u16string_view path)
{
    return path.size() >= 2 && path[1] == u':';
}

bool RemoveFile(std::u16string_view path)
{
    const std::u16string terminated(path);
    return DeleteFileW(win32::Wide(terminated)) != FALSE;
}

bool RenameFileNoReplace(std::u16string_view from, std::u16string_view to)
{
    const std::u16string source(from), target(to);
    // Write-through: the call returns once the new name is on the disk.
    return MoveFileExW(win32::Wide(source), win32::Wide(target), MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH) !=
           FALSE;
}

// A folder can't be flushed on Windows without rights to write it; the
// renames of this program are made write-through instead.
bool FlushFolderOf(std::u16string_view)
{
    return true;
}

} // namespace platform
