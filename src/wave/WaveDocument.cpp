#include "wave/WaveDocument.h"

#include "platform/File.h"
#include "wave/BextChunk.h"
#include "wave/Chunk.h"
#include "wave/ChunkObserver.h"
#include "wave/ChunkRun.h"
#include "wave/DataChunk.h"
#include "wave/FormatChunk.h"
#include "wave/FourCc.h"
#include "wave/IdScan.h"
#include "wave/InfoChunk.h"
#include "wave/ListChunk.h"
#include "wave/RootChunk.h"

#include <algorithm>
#include <new>
#include <typeinfo>

namespace {

constexpr std::uint32_t kOpenFlags = platform::kFileAttributeNormal | platform::kFileFlagSequentialScan;

// The walk reads headers in small steps; they come from one buffer.
constexpr std::uint32_t kReadAheadBytes = 64 * 1024;

// How deep RIFF and LIST chunks may nest. Each level costs a few bytes of
// file and one level of recursion; beyond this bound the walk is abandoned
// as a structural error rather than risking the worker's stack.
constexpr std::int32_t kMaxNesting = 256;

// A buffer for a file of fileBytes: no larger than the file needs, and no
// smaller than a page.
std::uint32_t BufferBytesFor(std::int64_t fileBytes, std::uint32_t largest)
{
    constexpr std::int64_t kSmallest = 4096;
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(fileBytes, kSmallest, largest));
}

} // namespace

void StreamGuard::Release()
{
    if (held)
        held->Leave();
    held = nullptr;
}

WaveDocument::WaveDocument() = default;

WaveDocument::~WaveDocument()
{
    DestroyChunks();
    stream.Close();
}

void WaveDocument::DestroyChunks()
{
    platform::LockGuard guard(lock);
    chunks.ClearFromBack();
}

// Walks the file at path as a sequence of RIFF chunks. True when every
// top-level chunk read well, also when the file is too short for one id;
// false when the file can't be opened or a top-level chunk failed. What was
// read stays in the tree either way. The container kind is never reset.
bool WaveDocument::Open(const WideString& path)
{
    return OpenFile(path) && WalkTopLevel();
}

// Before a new open, under the lock the caller holds.
void WaveDocument::CloseForOpen()
{
    chunks.ClearFromBack();
    stream.Close();
    nestingDepth = 0;
    walkAbandoned = false;
}

bool WaveDocument::OpenFile(const WideString& path)
{
    platform::LockGuard guard(lock);
    CloseForOpen();
    if (!(alignedIo ? stream.OpenAligned(path, kOpenFlags) : stream.OpenPlain(path, kOpenFlags)))
        return false;
    // Without memory for it the walk is slower, with the same results. An
    // aligned stream reads by sectors and has none.
    stream.EnableReadAhead(BufferBytesFor(stream.GetSize(), kReadAheadBytes));
    return true;
}

bool WaveDocument::OpenMemory(const MemoryBytes& bytes, const WideString& name)
{
    platform::LockGuard guard(lock);
    CloseForOpen();
    return stream.OpenMemory(bytes, name);
}

// False when no file is open, as Open is.
bool WaveDocument::Walk()
{
    platform::LockGuard guard(lock);
    chunks.ClearFromBack();
    containerKind = kContainerUnknown;
    nestingDepth = 0;
    walkAbandoned = false;
    return stream.IsOpen() && stream.SeekTo(0) && WalkTopLevel();
}

bool WaveDocument::WalkTopLevel()
{
    platform::LockGuard guard(lock);
    bool result = true;
    std::uint32_t id = 0;
    while (ReadTopLevelId(id, result)) {
        std::unique_ptr<Chunk> chunk;
        if (!CreateChunk(id, chunk))
            continue;
        if (!chunk->Read(id))
            result = false;
        Keep(chunks, std::move(chunk));
        if (walkAbandoned) {
            result = false;
            break;
        }
    }
    idScan.Release();
    if (dataChunk)
        dataChunk->UpdateFrameCount();
    return result;
}

// Reads the id of the next top-level chunk; false at the end of the file.
//
// While no RIFF id has been met, the chunk of an id without a class of its
// own fails at once, having read nothing but its id. Such words are passed
// over here a block at a time, each counting as a failed chunk, so that a
// large file that is not RIFF costs neither a chunk object nor a call of
// the system for every 4 bytes.
bool WaveDocument::ReadTopLevelId(std::uint32_t& id, bool& result)
{
    std::uint8_t bytes[4];
    if (stream.Read(bytes, 4) < 4)
        return false;
    id = ReadLittleEndian32(bytes);
    if (containerKind == kContainerRiff || HasOwnClass(id))
        return true;
    result = false;
    return idScan.FindNext(stream, id);
}

// Called by the walk, which holds the lock.
void WaveDocument::Keep(Array<std::unique_ptr<Chunk>>& list, std::unique_ptr<Chunk> chunk)
{
    if (observer)
        observer->Kept(*chunk);
    // While no RIFF id has been met, nothing of a top-level chunk can matter
    // to a user of the document but the registry slots it holds, so a file
    // that is not RIFF costs no memory for each of its words. A chunk that
    // lost its slot never gets one back.
    const bool slotsOnly = treeForm == TreeForm::SlotsOnly || containerKind != kContainerRiff;
    if (slotsOnly && !HoldsRegistrySlot(*chunk)) {
        Discard(std::move(chunk));
    } else if (treeForm == TreeForm::Compact && containerKind == kContainerRiff && ChunkRun::Takes(*chunk) &&
               !HoldsFormatOrData(*chunk)) {
        auto* run = list.IsEmpty() ? nullptr : dynamic_cast<ChunkRun*>(list.At(list.Count() - 1).get());
        if (!run || run->IsFull()) {
            list.Add(std::make_unique<ChunkRun>(*this));
            run = static_cast<ChunkRun*>(list.At(list.Count() - 1).get());
        }
        run->Add(*chunk);
    } else {
        list.Add(std::move(chunk));
    }
    if (slotsOnly)
        DropChunksWithoutSlot(list);
}

// A file of millions of chunks without a class of their own would make and
// destroy a chunk object for each; the document keeps one to make again.
void WaveDocument::Discard(std::unique_ptr<Chunk> chunk)
{
    const Chunk& discarded = *chunk;
    if (!spareChunk && typeid(discarded) == typeid(Chunk) && discarded.GetChildren().IsEmpty()) {
        chunk->Renew();
        spareChunk = std::move(chunk);
    }
}

void WaveDocument::DropChunksWithoutSlot(Array<std::unique_ptr<Chunk>>& list)
{
    for (std::size_t i = list.Count(); i-- > 0;) {
        if (!HoldsRegistrySlot(*list.At(i)))
            list.RemoveAt(i);
    }
}

void WaveDocument::NoteRiffOpened(const RootChunk& chunk)
{
    if (observer)
        observer->RiffOpened(chunk);
}

void WaveDocument::NoteRiffClosed(const RootChunk& chunk, bool read)
{
    if (observer)
        observer->RiffClosed(chunk, read);
}

bool WaveDocument::HoldsRegistrySlot(const Chunk& chunk) const
{
    const void* self = &chunk;
    if (self == rootChunk || self == formatChunk || self == dataChunk || self == infoChunk || self == bextChunk)
        return true;
    for (const auto& child : chunk.GetChildren()) {
        if (HoldsRegistrySlot(*child))
            return true;
    }
    return false;
}

// A list may hold a format or data chunk as its child, and the writer asks
// the registry for both.
bool WaveDocument::HoldsFormatOrData(const Chunk& chunk) const
{
    const void* self = &chunk;
    if (self == formatChunk || self == dataChunk)
        return true;
    for (const auto& child : chunk.GetChildren()) {
        if (HoldsFormatOrData(*child))
            return true;
    }
    return false;
}

std::unique_ptr<Chunk> WaveDocument::TakeChunk(std::size_t index)
{
    platform::LockGuard guard(lock);
    return chunks.RemoveAt(index);
}

// Releases whatever the guard held and enters the lock, which stays held
// until the guard is released or destroyed.
FileStream& WaveDocument::AcquireStream(StreamGuard& guard)
{
    guard.Release();
    lock.Enter();
    guard.held = &lock;
    return stream;
}

bool WaveDocument::EnterNesting()
{
    ++nestingDepth;
    if (nestingDepth <= kMaxNesting && !walkAbandoned)
        return true;
    if (!walkAbandoned) {
        walkAbandoned = true;
        // Nothing behind this point is read: the walk ends at the end of the file.
        StreamGuard guard;
        AcquireStream(guard).Seek(0, platform::SeekOrigin::End);
    }
    return false;
}

// Makes the chunk class of id in slot, destroying what the slot held. RIFF
// and data chunks are made only here; every other id goes to the basic
// factory. True when the slot holds a new chunk.
bool WaveDocument::CreateChunk(std::uint32_t id, std::unique_ptr<Chunk>& slot)
{
    if (id != kIdRiff && id != kIdData)
        return CreateBasicChunk(id, slot);
    slot.reset();
    if (id == kIdRiff) {
        containerKind = kContainerRiff;
        slot.reset(new (std::nothrow) RootChunk(*this));
    } else {
        slot.reset(new (std::nothrow) DataChunk(*this, alignedIo));
    }
    return slot != nullptr;
}

// Makes the chunk class of id in slot for ids that may stand anywhere, also
// as the type of a list: RIFF and data make plain chunks here.
bool WaveDocument::CreateBasicChunk(std::uint32_t id, std::unique_ptr<Chunk>& slot)
{
    slot.reset();
    switch (id) {
    case kIdFormat:
        slot.reset(new (std::nothrow) FormatChunk(*this));
        break;
    case kIdInfo:
        slot.reset(new (std::nothrow) InfoChunk(*this));
        break;
    case kIdList:
        slot.reset(new (std::nothrow) ListChunk(*this));
        break;
    case kIdBext:
        slot.reset(new (std::nothrow) BextChunk(*this));
        break;
    default:
        if (spareChunk)
            slot = std::move(spareChunk);
        else
            slot.reset(new (std::nothrow) Chunk(*this));
    }
    return slot != nullptr;
}

// Adding overwrites the slot, so the chunk made last wins; taking out clears
// the slot only when it holds that very chunk.
template <typename ChunkClass>
bool WaveDocument::Register(ChunkClass*& registrySlot, ChunkClass* chunk, bool add)
{
    platform::LockGuard guard(lock);
    if (add)
        registrySlot = chunk;
    else if (registrySlot == chunk)
        registrySlot = nullptr;
    return true;
}

bool WaveDocument::RegisterRootChunk(RootChunk* chunk, bool add)
{
    return Register(rootChunk, chunk, add);
}

bool WaveDocument::RegisterFormatChunk(FormatChunk* chunk, bool add)
{
    return Register(formatChunk, chunk, add);
}

// Only the data chunk in the slot is ever asked for its frames, so one that
// loses the slot gives back its file handles: a file of many data chunks
// then can't run the process out of handles.
bool WaveDocument::RegisterDataChunk(DataChunk* chunk, bool add)
{
    platform::LockGuard guard(lock);
    if (add && dataChunk && dataChunk != chunk)
        dataChunk->CloseStreams();
    return Register(dataChunk, chunk, add);
}

bool WaveDocument::RegisterInfoChunk(InfoChunk* chunk, bool add)
{
    return Register(infoChunk, chunk, add);
}

bool WaveDocument::RegisterBextChunk(BextChunk* chunk, bool add)
{
    return Register(bextChunk, chunk, add);
}
