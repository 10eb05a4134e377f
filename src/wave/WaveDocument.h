#pragma once

#include "base/Array.h"
#include "base/WideString.h"
#include "files/FileStream.h"
#include "wave/IdScan.h"
#include "platform/RecursiveLock.h"

#include <cstdint>
#include <memory>

class BextChunk;
class Chunk;
class ChunkObserver;
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

// What a walk keeps of the chunks it has read. The result of Open, the
// container kind and the format and data slots are the same in every form.
enum class TreeForm {
    // Every chunk as an object.
    Whole,
    // What a writer needs: chunks that it copies byte for byte as they were
    // read become records of where they lie, in ChunkRuns; RIFF, "fmt ",
    // "data", chunks cut short in their header and chunks that hold the
    // format or data slot stay objects. The info and bext slots may end
    // empty: the writer has no use for them.
    Compact,
    // What the check needs: only the chunks that hold a registry slot, and
    // the containers around them. Memory doesn't grow with the number of
    // chunks in the file.
    SlotsOnly,
};

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
    // Open in two steps, for a reader that looks at the file before it
    // walks it, or walks it more than once: OpenFile opens the file at path
    // and walks nothing; Walk walks the open file from its start as a
    // document new to it would, the container kind unknown again.
    bool OpenFile(const WideString& path);
    // OpenFile over a file's bytes held in memory, which stay the caller's
    // until the document goes; name stands for the path.
    bool OpenMemory(const MemoryBytes& bytes, const WideString& name);
    bool Walk();
    // Aligned mode for the next Open: the document's stream and the data
    // chunk's streams bypass the system's cache.
    void SetAlignedIo(bool aligned) { alignedIo = aligned; }
    // The tree form of the next Open; Whole at construction.
    void SetTreeForm(TreeForm form) { treeForm = form; }
    // Told of every chunk of the next walks; null for none.
    void SetObserver(ChunkObserver* chunkObserver) { observer = chunkObserver; }
    // Whether the data chunks of the next walks open their frame streams;
    // on at construction. A reader that never asks for frames turns them
    // off: the walk then opens the file once, where each data chunk would
    // open it twice more.
    void SetFrameStreams(bool open) { frameStreams = open; }
    bool HasFrameStreams() const { return frameStreams; }
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

    // The walk hands each chunk that stays where it was read to the list
    // that holds it (the document's own, or a RIFF chunk's children); the
    // tree form decides what of it the list keeps.
    void Keep(Array<std::unique_ptr<Chunk>>& list, std::unique_ptr<Chunk> chunk);
    void NoteRiffOpened(const RootChunk& chunk);
    void NoteRiffClosed(const RootChunk& chunk, bool read);

private:
    template <typename ChunkClass>
    bool Register(ChunkClass*& registrySlot, ChunkClass* chunk, bool add);
    void CloseForOpen();
    bool WalkTopLevel();
    bool ReadTopLevelId(std::uint32_t& id, bool& result);
    bool HoldsRegistrySlot(const Chunk& chunk) const;
    bool HoldsFormatOrData(const Chunk& chunk) const;
    void DropChunksWithoutSlot(Array<std::unique_ptr<Chunk>>& list);
    void Discard(std::unique_ptr<Chunk> chunk);
    void DestroyChunks();

    platform::RecursiveLock lock;
    bool alignedIo = false;
    bool frameStreams = true;
    TreeForm treeForm = TreeForm::Whole;
    ChunkObserver* observer = nullptr;
    std::int32_t containerKind = kContainerUnknown;
    FileStream stream;
    Array<std::unique_ptr<Chunk>> chunks;
    std::unique_ptr<Chunk> spareChunk;
    RootChunk* rootChunk = nullptr;
    FormatChunk* formatChunk = nullptr;
    DataChunk* dataChunk = nullptr;
    InfoChunk* infoChunk = nullptr;
    BextChunk* bextChunk = nullptr;

    std::int32_t nestingDepth = 0;
    bool walkAbandoned = false;
    IdScan idScan;
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
