#include "wave/BextChunk.h"

#include "wave/WaveDocument.h"

#include <algorithm>
#include <cstring>

BextChunk::BextChunk(WaveDocument& document) : Chunk(document)
{
    document.RegisterBextChunk(this, true);
}

BextChunk::~BextChunk()
{
    document->RegisterBextChunk(this, false);
}

// The record takes at most its 858 bytes from the front of the body; a body
// of 1024 bytes and more is never read in and leaves it all zero.
bool BextChunk::Read(std::uint32_t chunkId)
{
    if (!Chunk::Read(chunkId))
        return false;
    if (document->GetContainerKind() == kContainerRiff && body.Size() > 0)
        std::memcpy(record.data(), body.Data(), std::min(body.Size(), kRecordBytes));
    return true;
}
