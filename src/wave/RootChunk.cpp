#include "wave/RootChunk.h"

#include "wave/FourCc.h"
#include "wave/WaveDocument.h"

RootChunk::RootChunk(WaveDocument& document) : Chunk(document), formType(kIdWave)
{
    document.RegisterRootChunk(this, true);
}

RootChunk::~RootChunk()
{
    document->RegisterRootChunk(this, false);
}

// Reads the size, the form type (stored without a test) and the children up
// to the declared end. A file that ends early is no error, and neither is a
// child that fails: it is dropped and the walk goes on from wherever the
// stream stands. False when the header is cut short, when no chunk can be
// made, or when the pad step fails.
bool RootChunk::Read(std::uint32_t chunkId)
{
    id = chunkId;
    StreamGuard guard;
    FileStream& stream = document->AcquireStream(guard);
    if (!stream.IsOpen() || document->GetContainerKind() != kContainerRiff)
        return false;
    NestingLevel level(*document);
    if (!level.IsAllowed())
        return false;
    if (!ReadContainerHeader(stream, formType))
        return false;

    const std::int64_t end = position + size + 8;
    if (stream.Tell() >= end)
        return true;
    for (;;) {
        std::uint32_t childId = 0;
        if (!ReadU32(stream, childId))
            return true;
        std::unique_ptr<Chunk> child;
        if (!document->CreateChunk(childId, child))
            return false;
        if (child->Read(childId))
            children.Add(std::move(child));
        if (document->IsWalkAbandoned())
            return false;
        // Padding follows the absolute position, not the parity of the size.
        if (stream.Tell() % 2 != 0 && !stream.Seek(1, platform::SeekOrigin::Current))
            return false;
        if (stream.Tell() >= end)
            return true;
    }
}
