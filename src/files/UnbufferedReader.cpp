#include "files/UnbufferedReader.h"

#include "files/PathParts.h"

UnbufferedReader::~UnbufferedReader()
{
    if (handle)
        platform::CloseFile(handle);
}

// False when the file can't be opened for reading or the sector size of
// its volume can't be told.
bool UnbufferedReader::Open(const WideString& path)
{
    const WideString fullPath = GetFullPath(path);
    if (handle || fullPath.IsEmpty() || !platform::QueryBytesPerSector(fullPath.View(), sectorSize) || sectorSize == 0)
        return false;
    handle = platform::OpenFileForReading(path.View(), platform::kFileAttributeNormal | platform::kFileFlagNoBuffering);
    return handle != nullptr;
}

// One request of count bytes at position, both whole sectors, into
// TransferMemory: the bytes that came (fewer at the end of the file), or
// -1 when the read failed.
std::int64_t UnbufferedReader::ReadAt(std::int64_t position, std::uint8_t* destination, std::uint32_t count)
{
    std::int64_t reached = 0;
    if (!handle || !platform::SeekFile(handle, position, platform::SeekOrigin::Begin, reached))
        return -1;
    return platform::ReadFromFile(handle, destination, count);
}
