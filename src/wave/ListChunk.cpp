#include "wave/ListChunk.h"

#include "wave/WaveDocument.h"

ListChunk::ListChunk(WaveDocument& document) : Chunk(document) {}

// Reads the size and the list type and makes the child by the basic factory,
// handing it the list's size less the type, wrapped to 32 bits. It doesn't
// look at the container kind, so a list is read in any file. A failed child
// is no failure of the list; false when the header is cut short, no child
// can be made, or the pad step fails.
bool ListChunk::Read(std::uint32_t chunkId)
{
    id = chunkId;
    StreamGuard guard;
    FileStream& stream = document->AcquireStream(guard);
    if (!stream.IsOpen())
        return false;
    NestingLevel level(*document);
    if (!level.IsAllowed())
        return false;
    std::uint32_t listType = 0;
    if (!ReadContainerHeader(stream, listType))
        return false;

    std::unique_ptr<Chunk> child;
    if (!document->CreateBasicChunk(listType, child))
        return false;
    // A list of fewer than 4 bytes gives its child a size of nearly 4 GiB,
    // which the child skips by a seek past the end of the file.
    child->SetSizeFromParent(static_cast<std::uint32_t>(size - 4));
    if (child->Read(listType))
        children.Add(std::move(child));
    if (document->IsWalkAbandoned())
        return false;
    if (stream.Tell() % 2 != 0 && !stream.Seek(1, platform::SeekOrigin::Current))
        return false;
    return true;
}
