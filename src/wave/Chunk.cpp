#include "wave/Chunk.h"

#include "wave/FourCc.h"
#include "wave/WaveDocument.h"

namespace {

// Bodies of this size and more are skipped by a seek and never read in.
constexpr std::int64_t kLargestBodyRead = 1023;

} // namespace

Chunk::Chunk(WaveDocument& document) : document(&document) {}

Chunk::~Chunk()
{
    // The subtree goes before the body.
    children.ClearFromBack();
}

void Chunk::SetSizeFromParent(std::int64_t parentSize)
{
    size = parentSize;
    readsOwnSize = false;
}

bool Chunk::ReadU32(FileStream& stream, std::uint32_t& value)
{
    std::uint8_t bytes[4];
    if (stream.Read(bytes, 4) < 4)
        return false;
    value = ReadLittleEndian32(bytes);
    return true;
}

bool Chunk::ReadContainerHeader(FileStream& stream, std::uint32_t& type)
{
    position = stream.Tell() - 4;
    std::uint32_t declared = 0;
    if (!ReadU32(stream, declared))
        return false;
    size = declared;
    return ReadU32(stream, type);
}

// Reads the size field (unless the parent gave the size) and the body, the
// id having been read already. A body of 1024 bytes or more is skipped by a
// seek, which succeeds behind the end of the file too; a shorter one is read
// into body, and a short read of at least one byte counts as success. False
// outside a RIFF file, with nothing read. The pad byte is the parent's step.
bool Chunk::Read(std::uint32_t chunkId)
{
    id = chunkId;
    StreamGuard guard;
    FileStream& stream = document->AcquireStream(guard);
    if (!stream.IsOpen() || document->GetContainerKind() != kContainerRiff)
        return false;
    position = stream.Tell() - 4;
    if (readsOwnSize) {
        std::uint32_t declared = 0;
        if (!ReadU32(stream, declared))
            return false;
        size = declared;
    }
    if (size > kLargestBodyRead)
        return stream.Seek(size, platform::SeekOrigin::Current);
    // A size below zero comes only from a parent that never set one.
    if (size < 0 || !body.Resize(static_cast<std::uint32_t>(size)))
        return false;
    if (size > 0) {
        std::uint32_t got = stream.Read(body.Data(), static_cast<std::uint32_t>(size));
        body.Resize(got);
        if (got == 0)
            return false;
    }
    return true;
}
