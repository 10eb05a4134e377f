#pragma once

#include "base/WideString.h"
#include "platform/File.h"

#include <cstdint>
#include <memory>

// The one way to a file: a thin object over a file handle with 64-bit
// positions, opened for reading. It owns its handle and is not copied; it has
// no lock of its own.
//
// Plain mode sends every operation straight to the operating system. A
// reader that walks a file in small steps may switch on read-ahead: small
// reads are then served from one buffer filled by large reads, and seeks only
// move a logical position, with results the same as in plain mode.
class FileStream {
public:
    FileStream();
    ~FileStream();
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    bool OpenPlain(const WideString& path, std::uint32_t flags);
    // Reads of fewer than half of bufferSize bytes go through a buffer of
    // that size from now until Close. False when there is no memory for it;
    // the stream then stays in plain mode.
    bool EnableReadAhead(std::uint32_t bufferSize);
    void Close();
    bool IsOpen() const { return handle != nullptr; }

    std::uint32_t Read(void* destination, std::uint32_t count);
    std::uint32_t Write(const void* source, std::uint32_t count);
    bool Seek(std::int64_t offset, platform::SeekOrigin origin);
    bool SeekTo(std::int64_t target) { return Seek(target, platform::SeekOrigin::Begin); }
    std::int64_t Tell();
    std::int64_t GetSize();
    bool ReadText(WideString& destination, std::uint32_t count);
    const WideString& GetPath() const { return path; }

private:
    struct ReadAheadBuffer;

    std::uint32_t ReadBuffered(std::uint8_t* destination, std::uint32_t count);
    bool MoveSystemPointerTo(std::int64_t target);

    platform::FileHandle handle = nullptr;
    WideString path;
    std::unique_ptr<ReadAheadBuffer> readAhead;
    // The logical position while read-ahead is on.
    std::int64_t position = 0;
};
