#pragma once

#include <cstdint>

class FileStream;

// The header of one chunk being written: the constructor writes the id and
// a size of 0, Finish patches the size with the length of what was written
// behind it and adds the pad byte. Finish runs once on every way out of the
// writing chunk: by hand, or from the destructor.
class ChunkWriteGuard {
public:
    ChunkWriteGuard(FileStream& target, std::uint32_t id);
    ~ChunkWriteGuard() { Finish(); }
    ChunkWriteGuard(const ChunkWriteGuard&) = delete;
    ChunkWriteGuard& operator=(const ChunkWriteGuard&) = delete;

    void Finish();

private:
    FileStream& target;
    std::int64_t bodyStart;
    bool finished = false;
};

// Writes the 4 bytes of value, little-endian; false when fewer went out.
bool WriteU32(FileStream& target, std::uint32_t value);
