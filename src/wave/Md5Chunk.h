#pragma once

#include "platform/Md5.h"
#include "wave/ChunkObserver.h"
#include "wave/FourCc.h"

#include <cstdint>
#include <string>

class FileStream;
struct Rf64Layout;

// The "MD5 " chunk that archives keep beside the audio: 16 bytes, the MD5
// of the data chunk's body (no header, no pad byte). Its finding in a walk
// or an RF64 layout, its reading and its hex form.
constexpr std::uint32_t kIdMd5 = MakeFourCc("MD5 ");
constexpr std::int64_t kMd5ChunkBytes = 16;

struct StoredMd5 {
    std::int64_t position = -1; // of the first MD5 chunk of the file's RIFF (or RF64); -1 for none
    std::int64_t size = 0;      // its size field
    platform::Md5Digest digest{};
    bool read = false; // its 16 bytes were read into digest
};

// Notes the first MD5 chunk among the children of the outermost RIFF
// chunk of a walk. Used on the thread of the walk.
class Md5ChunkFinder : public ChunkObserver {
public:
    void RiffOpened(const RootChunk&) override { ++depth; }
    void RiffClosed(const RootChunk&, bool) override { --depth; }
    void Kept(const Chunk& chunk) override;

    const StoredMd5& Found() const { return found; }
    StoredMd5& Found() { return found; }

private:
    int depth = 0;
    StoredMd5 found;
};

// The first MD5 chunk among an RF64 file's top-level chunks.
StoredMd5 FindRf64Md5(const Rf64Layout& layout);
class FileLayout;
// The stored MD5 of a file whose layout was walked with finder (an RF64
// file's from its layout), its digest read when it is 16 bytes.
StoredMd5 FindStoredMd5(FileLayout& layout, const Md5ChunkFinder& finder);
// Reads the digest of a found chunk of 16 bytes from stream; false when
// there is none, it is of another size, or it can't be read whole.
bool ReadStoredMd5(FileStream& stream, StoredMd5& stored);
// The digest in 32 lower-case hex digits, as md5sum writes it.
std::string Md5Hex(const platform::Md5Digest& digest);
