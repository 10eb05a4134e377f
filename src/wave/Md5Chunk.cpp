#include "wave/Md5Chunk.h"

#include "files/FileStream.h"
#include "wave/Chunk.h"
#include "wave/FileLayout.h"
#include "wave/Rf64File.h"

void Md5ChunkFinder::Kept(const Chunk& chunk)
{
    // A size field cut short (-1) is no chunk of any size.
    if (depth == 1 && found.position < 0 && chunk.GetId() == kIdMd5 && chunk.GetSize() >= 0) {
        found.position = chunk.GetPosition();
        found.size = chunk.GetSize();
    }
}

StoredMd5 FindRf64Md5(const Rf64Layout& layout)
{
    StoredMd5 stored;
    for (const Rf64Chunk& chunk : layout.chunks) {
        if (chunk.id == kIdMd5) {
            stored.position = chunk.position;
            stored.size = chunk.size;
            break;
        }
    }
    return stored;
}

StoredMd5 FindStoredMd5(FileLayout& layout, const Md5ChunkFinder& finder)
{
    StoredMd5 stored = layout.GetContainer() == FileContainer::Rf64 && layout.HasRf64Layout()
                           ? FindRf64Md5(layout.GetRf64Layout())
                           : finder.Found();
    StreamGuard guard;
    ReadStoredMd5(layout.AcquireStream(guard), stored);
    return stored;
}

bool ReadStoredMd5(FileStream& stream, StoredMd5& stored)
{
    stored.read = stored.position >= 0 && stored.size == kMd5ChunkBytes && stream.SeekTo(stored.position + 8) &&
                  stream.Read(stored.digest.data(), kMd5ChunkBytes) == kMd5ChunkBytes;
    return stored.read;
}

std::string Md5Hex(const platform::Md5Digest& digest)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string hex;
    for (std::uint8_t byte : digest) {
        hex += kDigits[byte >> 4];
        hex += kDigits[byte & 15];
    }
    return hex;
}
