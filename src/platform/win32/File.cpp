#include "platform/File.h"

#include "platform/win32/WinText.h"

#include <windows.h>

namespace platform {

FileHandle OpenFileForReading(std::u16string_view path, std::uint32_t flags)
{
    std::u16string terminated(path);
    HANDLE file = CreateFileW(win32::Wide(terminated), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, flags, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return nullptr;
    return reinterpret_cast<FileHandle>(file);
}

FileHandle OpenFileForWriting(std::u16string_view path, std::uint32_t flags, bool createNew)
{
    std::u16string terminated(path);
    HANDLE file = CreateFileW(win32::Wide(terminated), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, createNew ? CREATE_NEW : OPEN_EXISTING, flags, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return nullptr;
    return reinterpret_cast<FileHandle>(file);
}

void CloseFile(FileHandle file)
{
    CloseHandle(reinterpret_cast<HANDLE>(file));
}

std::int64_t ReadFromFile(FileHandle file, void* destination, std::uint32_t count)
{
    DWORD read = 0;
    if (!ReadFile(reinterpret_cast<HANDLE>(file), destination, count, &read, nullptr))
        return -1;
    return read;
}

std::int64_t WriteToFile(FileHandle file, const void* source, std::uint32_t count)
{
    DWORD written = 0;
    if (!WriteFile(reinterpret_cast<HANDLE>(file), source, count, &written, nullptr))
        return -1;
    return written;
}

bool SeekFile(FileHandle file, std::int64_t offset, SeekOrigin origin, std::int64_t& newPosition)
{
    // SetFilePointer fails only when the low half is INVALID_SET_FILE_POINTER
    // and the last error says so; the low half alone may be a real position.
    LONG high = static_cast<LONG>(offset >> 32);
    SetLastError(NO_ERROR);
    DWORD low = SetFilePointer(reinterpret_cast<HANDLE>(file), static_cast<LONG>(offset & 0xFFFFFFFF), &high,
                               static_cast<DWORD>(origin));
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != NO_ERROR)
        return false;
    newPosition = (static_cast<std::int64_t>(high) << 32) | low;
    return true;
}

bool QueryFileSize(FileHandle file, std::int64_t& size)
{
    DWORD high = 0;
    SetLastError(NO_ERROR);
    DWORD low = GetFileSize(reinterpret_cast<HANDLE>(file), &high);
    if (low == INVALID_FILE_SIZE && GetLastError() != NO_ERROR)
        return false;
    size = (static_cast<std::int64_t>(high) << 32) | low;
    return true;
}

bool FlushFileToDisk(FileHandle file)
{
    return FlushFileBuffers(reinterpret_cast<HANDLE>(file)) != FALSE;
}

bool SetFileEnd(FileHandle file)
{
    return SetEndOfFile(reinterpret_cast<HANDLE>(file)) != FALSE;
}

// GetDiskFreeSpaceW on the root of the path's volume: its drive ("C:\")
// or its share ("\\server\share\"); any other path asks about the current
// drive.
bool QueryBytesPerSector(std::u16string_view fullPath, std::uint32_t& bytes)
{
    std::u16string root;
    if (fullPath.size() >= 2 && fullPath[1] == u':') {
        root = std::u16string(fullPath.substr(0, 2)) + u"\\";
    } else if (fullPath.substr(0, 2) == u"\\\\") {
        const std::size_t server = fullPath.find(u'\\', 2);
        const std::size_t share = server == std::u16string_view::npos ? server : fullPath.find(u'\\', server + 1);
        root = std::u16string(fullPath.substr(0, share)) + u"\\";
    }
    DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, clusters = 0;
    if (!GetDiskFreeSpaceW(root.empty() ? nullptr : win32::Wide(root), &sectorsPerCluster, &bytesPerSector,
                           &freeClusters, &clusters) ||
        bytesPerSector == 0)
        return false;
    bytes = bytesPerSector;
    return true;
}

void* AllocateTransferMemory(std::size_t bytes)
{
    return VirtualAlloc(nullptr, bytes, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
}

void FreeTransferMemory(void* memory, std::size_t)
{
    if (memory)
        VirtualFree(memory, 0, MEM_RELEASE);
}

} // namespace platform
