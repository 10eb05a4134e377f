#pragma once

#include "base/Array.h"
#include "base/WideString.h"
#include "files/ByteBlock.h"
#include "files/FileStream.h"
#include "platform/RecursiveLock.h"

#include <cstdint>
#include <memory>

class BextChunk;
class Chunk;
class DataChunk;
class FormatChunk;
class InfoChunk;
class RootChunk;

// Holds the document's lock from WaveDocument::AcquireStream until it is
// released or destroyed.
class StreamGuard {
public:
    StreamGuard() = default;
    ~StreamGuard() { Release(); }
    StreamGuard(const StreamGuard&) = delete;
    StreamGuard& operator=(const StreamGuard&) = delete;

    void Release();

private:
    friend class WaveDocument;
    platform::RecursiveLock* held = nullptr;
};

// The container kinds of GetContainerKind: nothing known yet, and RIFF from
// the moment a RIFF identifier was met. A walk that ends false with any other
// kind than RIFF met a file that is not RIFF at all.
constexpr std::int32_t kContainerUnknown = 0;
constexpr std::int32_t kContainerRiff = 1;

// A RIFF file walked into a tree of chunks, with a registry of the chunks
// that its users ask for. One check makes one on its own stack; it owns the
// chunks and the streams. All reading goes through AcquireStream.
class WaveDocument {
public:
    WaveDocument();
    ~WaveDocument();
    WaveDocument(const WaveDocument&) = delete;
    WaveDocument& operator=(const WaveDocument&) = delete;

    bool Open(const WideString& path);
    // Aligned mode for the next Open: the document's stream and the data
    // chunk's streams bypass the system's cache.
    void SetAlignedIo(bool aligned) { alignedIo = aligned; }
    std::int32_t GetContainerKind() const { return containerKind; }
    FormatChunk* GetFormatChunk() const { return formatChunk; }
    DataChunk* GetDataChunk() const { return dataChunk; }
    FileStream& AcquireStream(StreamGuard& guard);
    const Array<std::unique_ptr<Chunk>>& GetChunks() const { return chunks; }
    // Takes a top-level chunk out of the document, to mend the tree before
    // a write.
    std::unique_ptr<Chunk> TakeChunk(std::size_t index);

    // Chunk factories
    bool CreateChunk(std::uint32_t id, std::unique_ptr<Chunk>& slot);
    bool CreateBasicChunk(std::uint32_t id, std::unique_ptr<Chunk>& slot);

    // Registry: a chunk's constructor registers it (true), its destructor
    // takes it out again (false).
    bool RegisterRootChunk(RootChunk* chunk, bool add);
    bool RegisterFormatChunk(FormatChunk* chunk, bool add);
    bool RegisterDataChunk(DataChunk* chunk, bool add);
    bool RegisterInfoChunk(InfoChunk* chunk, bool add);
    bool RegisterBextChunk(BextChunk* chunk, bool add);

    // Nesting of container chunks: each level enters on its way in and
    // leaves on its way out. Entering beyond the bound abandons the walk.
    bool EnterNesting();
    void LeaveNesting() { --nestingDepth; }
    bool IsWalkAbandoned() const { return walkAbandoned; }

private:
    template <typename ChunkClass>
    bool Register(ChunkClass*& registrySlot, ChunkClass* chunk, bool add);
    bool ReadTopLevelId(std::uint32_t& id, bool& result);
    bool HoldsRegistrySlot(const Chunk& chunk) const;
    void DropChunksWithoutSlot();
    void DestroyChunks();

    platform::RecursiveLock lock;
    bool alignedIo = false;
    std::int32_t containerKind = kContainerUnknown;
    FileStream stream;
    Array<std::unique_ptr<Chunk>> chunks;
    RootChunk* rootChunk = nullptr;
    FormatChunk* formatChunk = nullptr;
    DataChunk* dataChunk = nullptr;
    InfoChunk* infoChunk = nullptr;
    BextChunk* bextChunk = nullptr;

    std::int32_t nestingDepth = 0;
    bool walkAbandoned = false;
    ByteBlock scanBuffer;
};

// One level of container nesting for the length of a container's read.
class NestingLevel {
public:
    explicit NestingLevel(WaveDocument& document) : document(document), allowed(document.EnterNesting()) {}
    ~NestingLevel() { document.LeaveNesting(); }
    NestingLevel(const NestingLevel&) = delete;
    NestingLevel& operator=(const NestingLevel&) = delete;

    bool IsAllowed() const { return allowed; }

private:
    WaveDocument& document;
    bool allowed;
};
