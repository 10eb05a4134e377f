#include "wave/IdScan.h"

#include "files/FileStream.h"
#include "wave/FourCc.h"

#include <algorithm>
#include <cstring>

namespace {

// A large file that is not RIFF is read in blocks of this size, as cat
// reads it.
constexpr std::uint32_t kBlockBytes = 128 * 1024;

// Each byte of a block lies at its file position modulo a page, so that the
// system copies from its cache page to page, as it does for cat. Where the
// two sit a few bytes apart (the word read before the scan moves the file
// 4 bytes on, and the memory that the allocator maps for a large block on
// a worker thread begins 16 bytes into a page), every store of the copy
// lands just ahead of loads still to come at the same place in their
// page, and some processors then copy several times slower.
constexpr std::uint32_t kPageBytes = 4096;

using WordLanes = std::uint32_t __attribute__((vector_size(16)));
constexpr std::uint32_t kLaneWords = sizeof(WordLanes) / 4;

// The index of the first of count words at bytes that is an id of
// HasOwnClass; count when none is. Groups of words are ruled out with
// compares of four words at once and one branch a group.
std::uint32_t FindOwnClassWord(const std::uint8_t* bytes, std::uint32_t count)
{
    constexpr std::uint32_t kGroupWords = 32;
    std::uint32_t word = 0;
    for (; word + kGroupWords <= count; word += kGroupWords) {
        WordLanes hits = {};
        for (std::uint32_t lane = 0; lane < kGroupWords; lane += kLaneWords) {
            WordLanes ids;
            std::memcpy(&ids, bytes + (word + lane) * 4, sizeof ids);
            hits |= (ids == kIdRiff) | (ids == kIdData) | (ids == kIdFormat) | (ids == kIdList) | (ids == kIdInfo) |
                    (ids == kIdBext);
        }
        std::uint64_t halves[2];
        std::memcpy(halves, &hits, sizeof halves);
        if ((halves[0] | halves[1]) != 0)
            break;
    }
    for (; word < count; ++word) {
        if (HasOwnClass(ReadLittleEndian32(bytes + word * 4)))
            return word;
    }
    return count;
}

} // namespace

bool HasOwnClass(std::uint32_t id)
{
    return id == kIdRiff || id == kIdData || id == kIdFormat || id == kIdList || id == kIdInfo || id == kIdBext;
}

// Reads words from the stream's position on until one is such an id: true
// with the id in id and the stream right behind it, false at the end of
// the file or on a failed read.
bool IdScan::FindNext(FileStream& stream, std::uint32_t& id)
{
    // No more whole pages than the rest of the file needs, and one more to
    // begin the block on a page of its own.
    const std::int64_t first = stream.Tell();
    const std::int64_t pages = (stream.GetSize() - first + first % kPageBytes + kPageBytes - 1) / kPageBytes;
    const auto blockBytes = static_cast<std::uint32_t>(std::clamp<std::int64_t>(pages * kPageBytes, kPageBytes, kBlockBytes));
    if (!block.Resize(blockBytes + kPageBytes)) {
        // Without memory for the block, word by word.
        std::uint8_t bytes[4];
        while (stream.Read(bytes, 4) == 4) {
            id = ReadLittleEndian32(bytes);
            if (HasOwnClass(id))
                return true;
        }
        return false;
    }
    const auto address = reinterpret_cast<std::uintptr_t>(block.Data());
    std::uint8_t* const pageStart = block.Data() + (kPageBytes - address % kPageBytes) % kPageBytes;
    for (;;) {
        const std::int64_t start = stream.Tell();
        const auto lead = static_cast<std::uint32_t>(start % kPageBytes);
        std::uint8_t* const bytes = pageStart + lead;
        const std::uint32_t wanted = blockBytes - lead;
        const std::uint32_t got = stream.Read(bytes, wanted);
        const std::uint32_t words = got / 4;
        const std::uint32_t found = FindOwnClassWord(bytes, words);
        if (found < words) {
            id = ReadLittleEndian32(bytes + found * 4);
            return stream.SeekTo(start + (std::int64_t{found} + 1) * 4);
        }
        // A block that held no whole word ends where the file does: a block
        // shorter than a word is the last few bytes of a file's last page.
        if (got < wanted || words == 0)
            return false;
        // A word that the end of the block cut is read whole with the next.
        if (got % 4 != 0 && !stream.SeekTo(start + std::int64_t{words} * 4))
            return false;
    }
}
