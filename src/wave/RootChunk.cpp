#include "wave/RootChunk.h"

#include "layouttext/LayoutDocument.h"
#include "wave/ChunkWriteGuard.h"
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
    document->NoteRiffOpened(*this);
    const bool read = ReadChildren(stream);
    document->NoteRiffClosed(*this, read);
    return read;
}

bool RootChunk::ReadChildren(FileStream& stream)
{
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
            document->Keep(children, std::move(child));
        if (document->IsWalkAbandoned())
            return false;
        // Padding follows the absolute position, not the parity of the size.
        if (stream.Tell() % 2 != 0 && !stream.Seek(1, platform::SeekOrigin::Current))
            return false;
        if (stream.Tell() >= end)
            return true;
    }
}

// A child that can't take its section is destroyed; true once every
// section is used up.
bool RootChunk::LoadDescription(LayoutDocument& sections)
{
    if (!Chunk::LoadDescription(sections))
        return false;
    while (sections.GetSectionCount() > 0) {
        std::unique_ptr<Chunk> child;
        if (!document->CreateChunk(ChunkIdFromName(sections.GetSectionName(0)), child))
            return false;
        if (child->LoadDescription(sections))
            children.Add(std::move(child));
    }
    return true;
}

bool RootChunk::SetAttribute(const WideString& name, const WideString& value)
{
    if (name.View() != u"Type" || value.View() != u"Wave")
        return false;
    const bool changed = formType != kIdWave;
    formType = kIdWave;
    return changed;
}

// The first child that fails ends the write; the size field then holds
// what went out.
bool RootChunk::Write(FileStream& target)
{
    ChunkWriteGuard header(target, kIdRiff);
    if (!WriteU32(target, formType))
        return false;
    for (const auto& child : children) {
        if (!child->Write(target))
            return false;
    }
    return true;
}
