#pragma once

#include "base/Array.h"
#include "wave/Chunk.h"

#include <cstddef>
#include <cstdint>

// Chunks of a tree in compact form that are written byte for byte as they
// were read (Chunk::IsWrittenAsRead), kept as records of where they lie.
//
// A tidy copy of a file of millions of tiny chunks needs the whole tree in
// memory, and as objects it would cost over a hundred bytes a chunk, which a
// 32-bit process runs out of. A record is 16 bytes, and the records of a run
// grow by half at most, so a chunk costs at most 24 bytes even in the run
// being filled, and a run is capped so that growing it never needs much
// memory at once.
class ChunkRun : public Chunk {
public:
    struct Record {
        std::int64_t position;
        std::uint32_t size;
        std::uint32_t id;
    };
    static_assert(sizeof(Record) == 16);

    static constexpr std::size_t kMostRecords = 4096;

    // True for a chunk that a record can stand for: one written as read,
    // with its header read in full and a size field of its own.
    static bool Takes(const Chunk& chunk);

    explicit ChunkRun(WaveDocument& document);

    bool IsFull() const { return records.Count() >= kMostRecords; }
    // Records a chunk that Takes; the chunk itself can go.
    void Add(const Chunk& chunk);
    std::size_t Count() const { return records.Count(); }
    const Record& At(std::size_t index) const { return records.At(index); }
    // Another size for the body to copy, as Chunk::SetSize.
    void SetSizeAt(std::size_t index, std::uint32_t newSize) { records.At(index).size = newSize; }

    // Every chunk of the run in order, as Chunk::Write would write it; the
    // first that fails ends the write.
    bool Write(FileStream& target) override;

private:
    Array<Record> records;
};
