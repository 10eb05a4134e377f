#include "wave/Chunk.h"

#include "files/BufferPool.h"
#include "layouttext/LayoutDocument.h"
#include "wave/ChunkWriteGuard.h"
#include "wave/FourCc.h"
#include "wave/WaveDocument.h"

#include <algorithm>

namespace {

// Bodies of this size and more are skipped by a seek and never read in.
constexpr std::int64_t kLargestBodyRead = 1023;

// Bodies are copied in pieces of this size.
constexpr std::int64_t kCopyPiece = 2048;

} // namespace

Chunk::Chunk(WaveDocument& document) : document(&document) {}

Chunk::~Chunk()
{
    // The subtree goes before the body.
    children.ClearFromBack();
}

void Chunk::Renew()
{
    children.ClearFromBack();
    body.Resize(0);
    id = 0;
    position = -1;
    size = -1;
    readsOwnSize = true;
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

std::uint32_t ChunkIdFromName(const WideString& name)
{
    const std::u16string_view text = name.View();
    if (text == u"RF64")
        return kIdRf64;
    if (text == u"Riff")
        return kIdRiff;
    if (text == u"Data")
        return kIdData;
    if (text == u"Format")
        return kIdFormat;
    return 0;
}

// The attributes go by the virtual SetAttribute, whose results don't
// matter here; the map is walked in its own order.
bool Chunk::LoadDescription(LayoutDocument& sections)
{
    if (sections.GetSectionCount() == 0)
        return false;
    id = ChunkIdFromName(sections.GetSectionName(0));
    const AttributeMap& attributes = sections.GetSectionMap(0);
    WideString key, value;
    for (std::int32_t i = 0; attributes.GetEntry(i, key, value); ++i)
        SetAttribute(key, value);
    sections.RemoveFirstSection();
    return true;
}

bool Chunk::SetAttribute(const WideString&, const WideString&)
{
    return false;
}

// Copies the body from the document's file, byte for byte, in pieces of
// 2048 bytes; children are not visited. Without a readable source (a chunk
// of a description) the chunk goes out empty. A child of a list that took
// its size from the list writes its id alone, the body straight behind it.
// The copy stops at the first piece that can't be read or written in full,
// and the size field then holds what was copied.
bool Chunk::Write(FileStream& target)
{
    StreamGuard guard;
    FileStream& source = document->AcquireStream(guard);
    if (document->GetContainerKind() != kContainerRiff)
        return false;
    if (!source.IsOpen()) {
        ChunkWriteGuard empty(target, id);
        return true;
    }
    return CopyChunk(source, target, id, position, size, readsOwnSize);
}

bool Chunk::CopyChunk(FileStream& source, FileStream& target, std::uint32_t chunkId, std::int64_t chunkPosition,
                      std::int64_t chunkSize, bool withSizeField)
{
    if (!source.SeekTo(chunkPosition + 8))
        return false;
    std::unique_ptr<ChunkWriteGuard> header;
    if (withSizeField)
        header = std::make_unique<ChunkWriteGuard>(target, chunkId);
    else
        WriteU32(target, chunkId);

    bool copied = true;
    {
        PooledBlockLease lease;
        ByteBlock& block = lease.Block();
        for (std::int64_t done = 0; done < chunkSize;) {
            const auto piece = static_cast<std::uint32_t>(std::min(kCopyPiece, chunkSize - done));
            if (!block.Resize(piece) || !block.ReadFrom(source)) {
                copied = false;
                break;
            }
            const std::uint32_t n = block.Size();
            if (target.Write(block.Data(), n) < n) {
                copied = false;
                break;
            }
            done += n;
        }
    }
    if (header)
        header->Finish();
    return copied;
}
