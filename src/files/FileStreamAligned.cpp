// Aligned mode of FileStream: unbuffered transfers of whole sectors through
// one page-aligned buffer, behind a logical byte position.
#include "files/FileStream.h"

#include "files/PathParts.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::uint32_t kSectorsPerTransfer = 1024;
// Beyond this the buffer of 1024 sectors would pass 64 MiB.
constexpr std::uint32_t kLargestSector = 64 * 1024;

} // namespace

bool FileStream::OpenAligned(const WideString& newPath, std::uint32_t flags)
{
    Close();
    handle = platform::OpenFileForReading(newPath.View(), flags | platform::kFileFlagNoBuffering);
    if (!handle)
        return false;
    return StartAligned(newPath, false);
}

// Takes the sector size of the path's volume and a buffer of 1024 sectors.
// When the sector size can't be told the stream keeps its handle until
// Close. Without memory for the buffer the open still succeeds, and
// transfers then deliver 0 bytes.
bool FileStream::StartAligned(const WideString& newPath, bool canWrite)
{
    const WideString fullPath = GetFullPath(newPath);
    std::uint32_t bytesPerSector = 0;
    if (fullPath.IsEmpty() || !platform::QueryBytesPerSector(fullPath.View(), bytesPerSector) || bytesPerSector == 0 ||
        bytesPerSector > kLargestSector)
        return false;
    transferBuffer.reset();
    transferBuffer = std::make_unique<TransferMemory>(std::size_t{bytesPerSector} * kSectorsPerTransfer);
    path = newPath;
    position = 0;
    writable = canWrite;
    sectorSize = static_cast<std::int32_t>(bytesPerSector);
    return true;
}

// n raised to the next multiple of the sector size; 0 for no bytes.
std::int64_t FileStream::RoundUp(std::int64_t n) const
{
    if (n <= 0 || sectorSize <= 0)
        return 0;
    return (n + sectorSize - 1) / sectorSize * sectorSize;
}

// The bytes of one pass through the buffer that starts offset bytes into
// its first sector: all that is left when it fits, else what the buffer
// holds behind offset.
std::uint32_t FileStream::TakeFor(std::int64_t offset, std::uint32_t left) const
{
    const auto capacity = static_cast<std::int64_t>(transferBuffer->Size());
    if (offset + left < capacity)
        return left;
    return capacity > offset ? static_cast<std::uint32_t>(capacity - offset) : 0;
}

bool FileStream::MoveSystemPointer(std::int64_t target)
{
    std::int64_t reached = 0;
    return platform::SeekFile(handle, target, platform::SeekOrigin::Begin, reached);
}

// A read of 4 bytes costs one sector, a long one goes by loads of the whole
// buffer. A failed load returns 0, not what was delivered before it, and
// the position stays where those bytes took it.
std::uint32_t FileStream::ReadAligned(std::uint8_t* destination, std::uint32_t count)
{
    if (!transferBuffer)
        return 0;
    std::int64_t offset = position % sectorSize;
    if (!MoveSystemPointer(position - offset))
        return 0;
    auto* buffer = transferBuffer->Data();
    std::uint32_t done = 0;
    while (done < count) {
        const std::uint32_t take = TakeFor(offset, count - done);
        if (take == 0)
            break;
        const std::int64_t got = platform::ReadFromFile(handle, buffer, static_cast<std::uint32_t>(RoundUp(offset + take)));
        if (got < 0)
            return 0;
        const std::uint32_t n = got < offset ? 0 : static_cast<std::uint32_t>(std::min<std::int64_t>(take, got - offset));
        std::memcpy(destination + done, buffer + offset, n);
        position += n;
        done += n;
        if (n == 0)
            break;
        offset = 0;
    }
    return done;
}

// Reads the sector at filePosition into the buffer at bufferOffset, zeros
// behind what came. With whole set, only a full sector is success.
bool FileStream::LoadSector(std::uint32_t bufferOffset, std::int64_t filePosition, bool whole)
{
    auto* target = transferBuffer->Data() + bufferOffset;
    if (!MoveSystemPointer(filePosition))
        return false;
    const std::int64_t got = platform::ReadFromFile(handle, target, static_cast<std::uint32_t>(sectorSize));
    if (got < sectorSize)
        std::memset(target + std::max<std::int64_t>(got, 0), 0, static_cast<std::size_t>(sectorSize - std::max<std::int64_t>(got, 0)));
    return whole ? got == sectorSize : got >= 0;
}

// Writes through the buffer in whole sectors. A sector that the bytes
// cover only in part keeps what the file holds there: the first one is
// read before (and must be there whole), and so is the last one, so that
// a size field patched into the middle of the file leaves its neighbours
// as they were. The rounded writes leave the file longer than the
// position; Close sets the true end.
std::uint32_t FileStream::WriteAligned(const std::uint8_t* source, std::uint32_t count)
{
    if (!transferBuffer || !transferBuffer->Data())
        return 0;
    auto* buffer = transferBuffer->Data();
    std::int64_t offset = position % sectorSize;
    if (offset > 0 && !LoadSector(0, position - offset, true))
        return 0;
    std::uint32_t done = 0;
    while (done < count) {
        const std::uint32_t take = TakeFor(offset, count - done);
        if (take == 0)
            break;
        const std::int64_t base = position - offset;
        const std::int64_t span = RoundUp(offset + take);
        const bool lastSectorPartial = (offset + take) % sectorSize != 0;
        if (lastSectorPartial && (span > sectorSize || offset == 0) &&
            !LoadSector(static_cast<std::uint32_t>(span - sectorSize), base + span - sectorSize, false))
            return 0;
        std::memcpy(buffer + offset, source + done, take);
        if (!MoveSystemPointer(base) || platform::WriteToFile(handle, buffer, static_cast<std::uint32_t>(span)) != span)
            return 0;
        position += take;
        done += take;
        offset = 0;
    }
    return done;
}

// The logical position moves; the system's pointer goes to the start of
// its sector. A place before the start of the file is refused, and the
// position stays where it was.
bool FileStream::SeekAligned(std::int64_t target)
{
    if (target < 0)
        return false;
    position = target;
    return MoveSystemPointer(target - target % sectorSize);
}

// After the handle is closed: the file ends at the logical position, set
// through a buffered handle. Errors here go unreported.
void FileStream::EndAlignedWrite()
{
    platform::FileHandle file = platform::OpenFileForWriting(path.View(), platform::kFileAttributeNormal, false);
    if (!file)
        return;
    std::int64_t reached = 0;
    if (platform::SeekFile(file, position, platform::SeekOrigin::Begin, reached))
        platform::SetFileEnd(file);
    platform::CloseFile(file);
}
