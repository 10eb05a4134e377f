#pragma once

#include "base/Array.h"
#include "base/WideString.h"
#include "files/ByteBlock.h"

#include <cstdint>
#include <memory>

class FileStream;
class LayoutDocument;
class WaveDocument;

// The id of a section name of a chunk description, compared exactly: RF64,
// Riff, Data and Format; 0 for any other name.
std::uint32_t ChunkIdFromName(const WideString& name);

// One chunk of a RIFF file, and the class of every id without one of its
// own. Its parent owns it (the document owns the top-level chunks); it owns
// its children. Read on the document's thread only.
//
// A chunk is made either by reading a file or from a description, a section
// text whose sections name chunks and whose keys set their attributes. It
// writes itself out to a stream, copying its body from the file it was read
// from by its position and size, in pieces; the body is never held whole.
class Chunk {
public:
    explicit Chunk(WaveDocument& document);
    virtual ~Chunk();
    Chunk(const Chunk&) = delete;
    Chunk& operator=(const Chunk&) = delete;

    // Overrideables
    virtual bool Read(std::uint32_t id);
    // Takes the first section of sections as this chunk's id and
    // attributes, and removes it; false when there is none.
    virtual bool LoadDescription(LayoutDocument& sections);
    // True when the value changed something; the base class takes no name.
    virtual bool SetAttribute(const WideString& name, const WideString& value);
    // False when anything could not be written; what was written stays,
    // with its size fields patched to it.
    virtual bool Write(FileStream& target);
    // True when Write copies the chunk byte for byte from where it was read,
    // so that its id, position and size are all it needs.
    virtual bool IsWrittenAsRead() const { return true; }

    // Operations
    std::uint32_t GetId() const { return id; }
    std::int64_t GetPosition() const { return position; }
    std::int64_t GetSize() const { return size; }
    const ByteBlock& GetBody() const { return body; }
    const Array<std::unique_ptr<Chunk>>& GetChildren() const { return children; }
    // A parent that knows the size of its child hands it over and stops the
    // child from reading a size field of its own.
    void SetSizeFromParent(std::int64_t parentSize);
    bool ReadsOwnSize() const { return readsOwnSize; }

    // Mending the tree before a write: another size for the body to copy,
    // and a chunk taken in as the last child.
    void SetSize(std::int64_t newSize) { size = newSize; }

    // Back to what a new chunk of the document is, for the document to make
    // again.
    void Renew();
    void AdoptChild(std::unique_ptr<Chunk> child) { children.Add(std::move(child)); }

protected:
    // Reads 4 bytes as an unsigned little-endian number; false when fewer came.
    static bool ReadU32(FileStream& stream, std::uint32_t& value);
    // The header of a container: position, size and the four bytes of its
    // type behind the id already read; false when it is cut short.
    bool ReadContainerHeader(FileStream& stream, std::uint32_t& type);
    // Copies a chunk from source to target: its id, its size field unless
    // the size came from a list, and size bytes of body from position + 8.
    static bool CopyChunk(FileStream& source, FileStream& target, std::uint32_t chunkId, std::int64_t chunkPosition,
                          std::int64_t chunkSize, bool withSizeField);

    std::uint32_t id = 0;
    std::int64_t position = -1;
    std::int64_t size = -1;
    ByteBlock body;
    bool readsOwnSize = true;
    WaveDocument* document;
    Array<std::unique_ptr<Chunk>> children;
};
