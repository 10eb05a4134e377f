#pragma once

#include "base/WideString.h"
#include "files/MemoryBytes.h"
#include "files/TransferMemory.h"
#include "platform/File.h"

#include <cstdint>

// A file read past the system's cache in large requests of whole sectors,
// each straight into the caller's TransferMemory: the disk sees requests
// as large as the caller's, and nothing is copied on the way. Used by one
// thread at a time. Opened over bytes in memory, it copies its requests
// from them, as the same bytes on disk would be read.
class UnbufferedReader {
public:
    UnbufferedReader() = default;
    ~UnbufferedReader();
    UnbufferedReader(const UnbufferedReader&) = delete;
    UnbufferedReader& operator=(const UnbufferedReader&) = delete;

    bool Open(const WideString& path);
    // The bytes stay the caller's; their sectors are as long as the
    // smallest a disk has.
    bool OpenMemory(const MemoryBytes& bytes);
    std::uint32_t GetSectorSize() const { return sectorSize; }
    std::int64_t ReadAt(std::int64_t position, std::uint8_t* destination, std::uint32_t count);

private:
    platform::FileHandle handle = nullptr;
    std::uint32_t sectorSize = 0;
    std::int64_t fileSize = 0; // when opened
    MemoryBytes memory;
    bool inMemory = false;
};
