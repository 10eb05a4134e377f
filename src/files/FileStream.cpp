#include "files/FileStream.h"

#include "platform/TextCodec.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

FileStream::ReadAheadBuffer::~ReadAheadBuffer()
{
    std::free(bytes);
}

FileStream::FileStream() = default;

FileStream::~FileStream()
{
    Close();
}

// Each open closes what the stream had open before, so that a second open
// neither leaks the first handle nor reads the first file.
bool FileStream::OpenPlain(const WideString& newPath, std::uint32_t flags)
{
    Close();
    handle = platform::OpenFileForReading(newPath.View(), flags);
    if (!handle)
        return false;
    path = newPath;
    position = 0;
    sectorSize = 0;
    writable = false;
    return true;
}

bool FileStream::OpenMemory(const MemoryBytes& bytes, const WideString& name)
{
    Close();
    memory = bytes;
    inMemory = true;
    path = name;
    return true;
}

bool FileStream::CreateNew(const WideString& newPath, bool aligned)
{
    Close();
    handle = platform::OpenFileForWriting(newPath.View(),
                                          platform::kFileAttributeNormal | (aligned ? platform::kFileFlagNoBuffering : 0),
                                          true);
    if (!handle)
        return false;
    if (aligned)
        return StartAligned(newPath, true);
    path = newPath;
    position = 0;
    sectorSize = 0;
    writable = false;
    return true;
}

bool FileStream::EnableReadAhead(std::uint32_t bufferSize)
{
    if (!handle || bufferSize < 2 || sectorSize > 0)
        return false;
    auto buffer = std::make_unique<ReadAheadBuffer>();
    buffer->bytes = static_cast<std::uint8_t*>(std::malloc(bufferSize));
    if (!buffer->bytes)
        return false;
    buffer->capacity = bufferSize;
    std::int64_t current = Tell();
    buffer->start = current;
    buffer->systemPointer = current;
    position = current;
    readAhead = std::move(buffer);
    return true;
}

bool FileStream::Flush()
{
    return handle && platform::FlushFileToDisk(handle);
}

// The transfer buffer stays until the next aligned open or the destructor.
void FileStream::Close()
{
    if (handle)
        platform::CloseFile(handle);
    handle = nullptr;
    if (sectorSize > 0 && writable)
        EndAlignedWrite();
    path.Clear();
    readAhead.reset();
    memory = {};
    inMemory = false;
    position = 0;
    sectorSize = 0;
    writable = false;
}

// One read of the operating system; the bytes it reports, 0 on any error or
// when the stream is closed.
std::uint32_t FileStream::ReadFromSystem(void* destination, std::uint32_t count)
{
    if (inMemory)
        return ReadMemory(static_cast<std::uint8_t*>(destination), count);
    if (!handle || count == 0)
        return 0;
    if (sectorSize > 0)
        return ReadAligned(static_cast<std::uint8_t*>(destination), count);
    if (readAhead)
        return ReadBuffered(static_cast<std::uint8_t*>(destination), count);
    std::int64_t got = platform::ReadFromFile(handle, destination, count);
    return got < 0 ? 0 : static_cast<std::uint32_t>(got);
}

// What memory holds from the position on, as a file gives it: fewer bytes
// at its end, none behind it.
std::uint32_t FileStream::ReadMemory(std::uint8_t* destination, std::uint32_t count)
{
    const std::int64_t size = static_cast<std::int64_t>(memory.size);
    if (position >= size || count == 0)
        return 0;
    const std::uint32_t piece = static_cast<std::uint32_t>(std::min<std::int64_t>(count, size - position));
    std::memcpy(destination, memory.data + position, piece);
    position += piece;
    return piece;
}

std::uint32_t FileStream::ReadBuffered(std::uint8_t* destination, std::uint32_t count)
{
    ReadAheadBuffer& buffer = *readAhead;
    std::uint32_t done = 0;
    while (done < count) {
        std::int64_t offset = position - buffer.start;
        if (offset >= 0 && offset < buffer.filled) {
            std::uint32_t piece = std::min<std::uint32_t>(count - done, buffer.filled - static_cast<std::uint32_t>(offset));
            std::memcpy(destination + done, buffer.bytes + offset, piece);
            done += piece;
            position += piece;
            continue;
        }
        // Large reads bypass the buffer, as they would in plain mode.
        bool direct = count - done >= buffer.capacity / 2;
        if (!MoveSystemPointerTo(position))
            break;
        std::uint8_t* target = direct ? destination + done : buffer.bytes;
        std::uint32_t wanted = direct ? count - done : buffer.capacity;
        std::int64_t got = platform::ReadFromFile(handle, target, wanted);
        if (got <= 0)
            break;
        buffer.systemPointer += got;
        if (direct) {
            done += static_cast<std::uint32_t>(got);
            position += got;
            buffer.filled = 0;
        } else {
            buffer.start = position;
            buffer.filled = static_cast<std::uint32_t>(got);
        }
    }
    return done;
}

bool FileStream::MoveSystemPointerTo(std::int64_t target)
{
    if (readAhead->systemPointer == target)
        return true;
    std::int64_t reached = 0;
    if (!platform::SeekFile(handle, target, platform::SeekOrigin::Begin, reached))
        return false;
    readAhead->systemPointer = reached;
    return true;
}

// One write of the operating system; the bytes written, 0 on any error or
// when the stream is closed.
std::uint32_t FileStream::Write(const void* source, std::uint32_t count)
{
    if (!handle)
        return 0;
    if (sectorSize > 0 && writable)
        return WriteAligned(static_cast<const std::uint8_t*>(source), count);
    if (readAhead) {
        if (!MoveSystemPointerTo(position))
            return 0;
        readAhead->filled = 0;
    }
    std::int64_t written = platform::WriteToFile(handle, source, count);
    if (written < 0)
        return 0;
    if (readAhead) {
        readAhead->systemPointer += written;
        position += written;
    }
    return static_cast<std::uint32_t>(written);
}

// A target behind the end of the file is allowed, one before its start is
// not.
bool FileStream::Seek(std::int64_t offset, platform::SeekOrigin origin)
{
    if (!handle && !inMemory)
        return false;
    if (sectorSize > 0) {
        switch (origin) {
        case platform::SeekOrigin::Begin: return SeekAligned(offset);
        case platform::SeekOrigin::Current: return SeekAligned(position + offset);
        // Counted back from the end, as the sector rule has it.
        case platform::SeekOrigin::End: return SeekAligned(GetSize() - offset);
        }
        return false;
    }
    if (!readAhead && !inMemory) {
        std::int64_t reached = 0;
        return platform::SeekFile(handle, offset, origin, reached);
    }
    std::int64_t base = origin == platform::SeekOrigin::Begin     ? 0
                        : origin == platform::SeekOrigin::Current ? position
                                                                  : GetSize();
    if ((offset > 0 && base > std::numeric_limits<std::int64_t>::max() - offset) || base + offset < 0)
        return false;
    position = base + offset;
    return true;
}

std::int64_t FileStream::TellFromSystem()
{
    if (!handle)
        return 0;
    std::int64_t current = 0;
    if (!platform::SeekFile(handle, 0, platform::SeekOrigin::Current, current))
        return 0;
    return current;
}

// The size of the file, 0 on error.
std::int64_t FileStream::GetSize()
{
    // What is being written in aligned mode ends at the logical position.
    if (handle && sectorSize > 0 && writable)
        return position;
    if (inMemory)
        return static_cast<std::int64_t>(memory.size);
    std::int64_t size = 0;
    if (!handle || !platform::QueryFileSize(handle, size))
        return 0;
    return size;
}

// Reads count bytes and converts them from the thread's character set. Fewer
// bytes may come; what came is converted. True when the text is not empty.
// The bytes are read in pieces, so that a count that the file can't hold
// costs no more memory than the file gives.
bool FileStream::ReadText(WideString& destination, std::uint32_t count)
{
    destination.Clear();
    if (!IsOpen() || count == 0)
        return false;
    constexpr std::uint32_t kPiece = 1 << 16;
    std::string bytes;
    while (bytes.size() < count) {
        std::uint32_t wanted = std::min<std::uint32_t>(kPiece, count - static_cast<std::uint32_t>(bytes.size()));
        std::size_t before = bytes.size();
        bytes.resize(before + wanted);
        std::uint32_t got = Read(bytes.data() + before, wanted);
        bytes.resize(before + got);
        if (got < wanted)
            break;
    }
    destination = WideString(platform::ThreadBytesToWide(bytes.data(), bytes.size()));
    return !destination.IsEmpty();
}
