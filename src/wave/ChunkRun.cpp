#include "wave/ChunkRun.h"

#include "wave/WaveDocument.h"

#include <limits>

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

bool ChunkRun::Write(FileStream& target)
{
    StreamGuard guard;
    FileStream& source = document->AcquireStream(guard);
    if (document->GetContainerKind() != kContainerRiff || !source.IsOpen())
        return false;
    for (const Record& record : records) {
        if (!CopyChunk(source, target, record.id, record.position, record.size, true))
            return false;
    }
    return true;
}
