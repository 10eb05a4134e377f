#pragma once

#include "base/WideString.h"
#include "files/MemoryBytes.h"
#include "files/TransferMemory.h"
#include "platform/File.h"

#include <cstdint>
#include <cstring>
#include <memory>

// The one way to a file: a thin object over a file handle with 64-bit
// positions. It owns its handle and is not copied; it has no lock of its own.
// Streams open for reading; CreateNew makes a new file to write.
//
// Plain mode sends every operation straight to the operating system. A
// reader that walks a file in small steps may switch on read-ahead: small
// reads are then served from one buffer filled by large reads, and seeks only
// move a logical position, with results the same as in plain mode.
//
// Aligned mode bypasses the system's cache: every transfer goes through a
// page-aligned buffer of 1024 sectors and covers whole sectors, while the
// stream keeps a logical byte position of its own. Callers see the same
// operations with byte positions and counts.
//
// Memory mode reads a file that the caller holds in memory, under a name
// of its own: reads, seeks, Tell and GetSize as they are on the same bytes
// on disk, writes refused.
class FileStream {
public:
    FileStream();
    ~FileStream();
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    bool OpenPlain(const WideString& path, std::uint32_t flags);
    bool OpenAligned(const WideString& path, std::uint32_t flags);
    // Reads bytes, which stay the caller's; name is what GetPath gives.
    bool OpenMemory(const MemoryBytes& bytes, const WideString& name);
    // Makes a new file for writing and reading; false when one exists at
    // path. With aligned set, the stream writes in aligned mode, and Close
    // sets the end of the file to the logical position.
    bool CreateNew(const WideString& path, bool aligned);
    // Reads of fewer than half of bufferSize bytes go through a buffer of
    // that size from now until Close. False when there is no memory for it;
    // the stream then stays in plain mode.
    bool EnableReadAhead(std::uint32_t bufferSize);
    void Close();
    // Waits until what was written is on the disk; false when it can't be
    // told that it is.
    bool Flush();
    bool IsOpen() const { return handle != nullptr || inMemory; }
    bool IsAligned() const { return sectorSize > 0; }

    // A walk reads a few bytes at a time, millions of times over; a read
    // that the read-ahead buffer holds is served here without a call.
    std::uint32_t Read(void* destination, std::uint32_t count)
    {
        if (handle && readAhead) {
            const std::int64_t offset = position - readAhead->start;
            if (offset >= 0 && offset + count <= readAhead->filled) {
                std::memcpy(destination, readAhead->bytes + offset, count);
                position += count;
                return count;
            }
        }
        return ReadFromSystem(destination, count);
    }
    std::uint32_t Write(const void* source, std::uint32_t count);
    bool Seek(std::int64_t offset, platform::SeekOrigin origin);
    bool SeekTo(std::int64_t target) { return Seek(target, platform::SeekOrigin::Begin); }
    // The current position, 0 on error. Read-ahead and aligned mode keep it
    // themselves.
    std::int64_t Tell() { return (handle && (readAhead || sectorSize > 0)) || inMemory ? position : TellFromSystem(); }
    std::int64_t GetSize();
    bool ReadText(WideString& destination, std::uint32_t count);
    const WideString& GetPath() const { return path; }

private:
    struct ReadAheadBuffer {
        std::uint8_t* bytes = nullptr;
        std::uint32_t capacity = 0;
        std::int64_t start = 0;         // file position of bytes[0]
        std::uint32_t filled = 0;       // valid bytes from start on
        std::int64_t systemPointer = 0; // where the operating system's pointer stands

        ~ReadAheadBuffer();
    };

    std::uint32_t ReadFromSystem(void* destination, std::uint32_t count);
    std::uint32_t ReadMemory(std::uint8_t* destination, std::uint32_t count);
    std::uint32_t ReadBuffered(std::uint8_t* destination, std::uint32_t count);
    std::int64_t TellFromSystem();
    bool MoveSystemPointerTo(std::int64_t target);

    // Aligned mode
    bool StartAligned(const WideString& newPath, bool canWrite);
    std::uint32_t ReadAligned(std::uint8_t* destination, std::uint32_t count);
    std::uint32_t WriteAligned(const std::uint8_t* source, std::uint32_t count);
    bool SeekAligned(std::int64_t target);
    bool MoveSystemPointer(std::int64_t target);
    bool LoadSector(std::uint32_t bufferOffset, std::int64_t filePosition, bool whole);
    std::int64_t RoundUp(std::int64_t count) const;
    std::uint32_t TakeFor(std::int64_t offset, std::uint32_t left) const;
    void EndAlignedWrite();

    platform::FileHandle handle = nullptr;
    WideString path;
    std::unique_ptr<ReadAheadBuffer> readAhead;
    std::unique_ptr<TransferMemory> transferBuffer;
    // Memory mode's bytes.
    MemoryBytes memory;
    bool inMemory = false;
    // The logical position while read-ahead, aligned or memory mode is on.
    std::int64_t position = 0;
    // Bytes per sector in aligned mode; 0 in plain mode.
    std::int32_t sectorSize = 0;
    bool writable = false;
};
