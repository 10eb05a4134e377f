#include "files/UnbufferedReader.h"

#include "files/PathParts.h"

#include <algorithm>
#include <cstring>

UnbufferedReader::~UnbufferedReader()
{
    if (handle)
        platform::CloseFile(handle);
}

// False when the file can't be opened for reading, or the sector size of
// its volume or the file's length can't be told.
bool UnbufferedReader::Open(const WideString& path)
{
    const WideString fullPath = GetFullPath(path);
    if (handle || fullPath.IsEmpty() || !platform::QueryBytesPerSector(fullPath.View(), sectorSize) || sectorSize == 0)
        return false;
    handle = platform::OpenFileForReading(path.View(), platform::kFileAttributeNormal | platform::kFileFlagNoBuffering);
    return handle != nullptr && platform::QueryFileSize(handle, fileSize);
}

bool UnbufferedReader::OpenMemory(const MemoryBytes& bytes)
{
    if (handle || inMemory)
        return false;
    memory = bytes;
    inMemory = true;
    sectorSize = 512;
    fileSize = static_cast<std::int64_t>(bytes.size);
    return true;
}

// One request of count bytes at position, both whole sectors, into
// TransferMemory: the bytes that came, fewer only at the end of the file
// (the length it had when opened, or less should it have shrunk since), or
// -1 when a read failed. A read that brings fewer bytes than asked is
// followed by another for the rest: the system may cut any read short. No
// read starts at or past the end, since a direct read there may be refused
// for its position rather than bring nothing.
std::int64_t UnbufferedReader::ReadAt(std::int64_t position, std::uint8_t* destination, std::uint32_t count)
{
    if (inMemory) {
        if (position < 0)
            return -1;
        const std::int64_t got = std::clamp<std::int64_t>(fileSize - position, 0, count);
        if (got > 0)
            std::memcpy(destination, memory.data + position, static_cast<std::size_t>(got));
        return got;
    }
    std::int64_t reached = 0;
    if (!handle || !platform::SeekFile(handle, position, platform::SeekOrigin::Begin, reached))
        return -1;
    std::uint32_t done = 0;
    while (done < count && position + done < fileSize) {
        const std::int64_t got = platform::ReadFromFile(handle, destination + done, count - done);
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        done += static_cast<std::uint32_t>(got);
    }
    return done;
}
