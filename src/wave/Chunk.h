#pragma once

#include "base/Array.h"
#include "files/ByteBlock.h"

#include <cstdint>
#include <memory>

class FileStream;
class WaveDocument;

// One chunk of a RIFF file, and the class of every id without one of its
// own. Its parent owns it (the document owns the top-level chunks); it owns
// its children. Read on the document's thread only.
class Chunk {
public:
    explicit Chunk(WaveDocument& document);
    virtual ~Chunk();
    Chunk(const Chunk&) = delete;
    Chunk& operator=(const Chunk&) = delete;

    // Overrideables
    virtual bool Read(std::uint32_t id);

    // Operations
    std::uint32_t GetId() const { return id; }
    std::int64_t GetPosition() const { return position; }
    std::int64_t GetSize() const { return size; }
    const ByteBlock& GetBody() const { return body; }
    const Array<std::unique_ptr<Chunk>>& GetChildren() const { return children; }
    // A parent that knows the size of its child hands it over and stops the
    // child from reading a size field of its own.
    void SetSizeFromParent(std::int64_t parentSize);

protected:
    // Reads 4 bytes as an unsigned little-endian number; false when fewer came.
    static bool ReadU32(FileStream& stream, std::uint32_t& value);
    // The header of a container: position, size and the four bytes of its
    // type behind the id already read; false when it is cut short.
    bool ReadContainerHeader(FileStream& stream, std::uint32_t& type);

    std::uint32_t id = 0;
    std::int64_t position = -1;
    std::int64_t size = -1;
    ByteBlock body;
    bool readsOwnSize = true;
    WaveDocument* document;
    Array<std::unique_ptr<Chunk>> children;
};
