#include "wave/ChunkRun.h"

#include "files/ByteBlock.h"
#include "files/FileStream.h"
#include "wave/FourCc.h"
#include "wave/WaveDocument.h"

#include <limits>

namespace {

constexpr std::uint32_t kGatherBytes = 64 * 1024;
// Chunks with larger bodies are copied on their own.
constexpr std::uint32_t kLargestGathered = 4 * 1024;

} // namespace

ChunkRun::ChunkRun(WaveDocument& document) : Chunk(document) {}

bool ChunkRun::Takes(const Chunk& chunk)
{
    return chunk.IsWrittenAsRead() && chunk.ReadsOwnSize() && chunk.GetPosition() >= 0 && chunk.GetSize() >= 0 &&
           chunk.GetSize() <= std::numeric_limits<std::uint32_t>::max();
}

void ChunkRun::Add(const Chunk& chunk)
{
    if (records.IsEmpty())
        position = chunk.GetPosition();
    records.Add(Record{chunk.GetPosition(), static_cast<std::uint32_t>(chunk.GetSize()), chunk.GetId()});
}

// Small chunks are gathered in one buffer and written together: a run of
// thousands of tiny chunks would otherwise cost several calls of the system
// for each. Each comes out as Chunk::Write would write it: its header, the
// body bytes that the file holds, and a pad byte by the absolute position.
bool ChunkRun::Write(FileStream& target)
{
    StreamGuard guard;
    FileStream& source = document->AcquireStream(guard);
    if (document->GetContainerKind() != kContainerRiff || !source.IsOpen())
        return false;
    ByteBlock gathered;
    const bool canGather = gathered.Resize(kGatherBytes);
    std::int64_t start = target.Tell();
    std::uint32_t used = 0;
    const auto flush = [&] {
        const bool written = target.Write(gathered.Data(), used) == used;
        start += used;
        used = 0;
        return written;
    };
    for (const Record& record : records) {
        if (!canGather || record.size > kLargestGathered) {
            if (!flush() || !CopyChunk(source, target, record.id, record.position, record.size, true))
                return false;
            start = target.Tell();
            continue;
        }
        if (used + 8 + record.size + 1 > kGatherBytes && !flush())
            return false;
        if (!source.SeekTo(record.position + 8)) {
            flush();
            return false;
        }
        std::uint8_t* header = gathered.Data() + used;
        const std::uint32_t got = record.size > 0 ? source.Read(header + 8, record.size) : 0;
        WriteLittleEndian32(header, record.id);
        WriteLittleEndian32(header + 4, got);
        used += 8 + got;
        if ((start + used) % 2 != 0)
            gathered.Data()[used++] = 0;
        // A body cut short ends the write, with what came.
        if (got < record.size) {
            flush();
            return false;
        }
    }
    return flush();
}
