#include "mend/TidyWalk.h"

#include "base/TextFormat.h"
#include "mend/AudioEnd.h"
#include "wave/FourCc.h"
#include "wave/Md5Chunk.h"

#include <algorithm>
#include <cstring>

namespace {

// A chunk's name in a message: its id, without the spaces that pad it.
std::string ChunkName(std::uint32_t id)
{
    std::string text = ChunkIdText(id);
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

} // namespace

TidyWalk::TidyWalk(FileStream& input, FileStream& target, std::int64_t fileSize, const TidyPlan& plan,
                   std::vector<std::string>& changes, std::string& problem, Run run)
    : input(input), fileSize(fileSize), plan(plan), changes(changes), problem(problem), run(run),
      writer(input, target, run == Run::Dry ? CopyWriter::Output::Dry : CopyWriter::Output::Written)
{
    if (plan.storeMd5)
        writer.HashData();
}

// The whole pass; false with the reason in problem when the copy is
// refused or can't be written. What changes says holds the pass's lines.
bool TidyWalk::Copy()
{
    if (!ReadHead())
        return false;
    if (!WriteHead())
        return Failed();
    return CopyChunks() && StoreMd5() && FinishSizes();
}

bool TidyWalk::ReadHead()
{
    if (!input.SeekTo(0) || input.Read(riff, 12) != 12 ||
        (std::memcmp(riff, "RIFF", 4) != 0 && std::memcmp(riff, "RF64", 4) != 0))
        return Refuse("the file does not begin with its RIFF chunk");
    fromRf64 = std::memcmp(riff, "RF64", 4) == 0;
    riffSize = ReadLittleEndian32(riff + 4);
    declaredRiff = riffSize;
    if (fromRf64) {
        // The ds64 chunk comes first; its 64-bit sizes, as the layout read
        // them, stand where a 32-bit size of 0xFFFFFFFF defers.
        if (!plan.rf64 || !plan.rf64->hasDs64)
            return Refuse("an RF64 file without its ds64 chunk");
        const std::uint32_t ds64Size = plan.rf64->ds64Size;
        declaredRiff = plan.rf64->riffSize;
        firstChunk += 8 + ds64Size + ds64Size % 2;
    }
    return true;
}

// RIFF as it was, or RF64 with a ds64 chunk, the input's own (its table
// kept) or a new one. A dry run takes the input's layout.
bool TidyWalk::WriteHead()
{
    const bool toRf64 = run == Run::Rf64 || (run == Run::Dry && fromRf64);
    if (!toRf64)
        return writer.StartRiff(riff);
    return writer.StartRf64(riff + 8, fromRf64 ? std::optional<std::uint32_t>(plan.rf64->ds64Size) : std::nullopt);
}

// Every chunk from the first behind the head to the end of the file, with
// sizes that run past the end cut to what is there and a placeholder data
// size made the audio present.
bool TidyWalk::CopyChunks()
{
    const bool placeholder = declaredRiff == 0 || declaredRiff == 0xFFFFFFFF;
    const std::int64_t declaredEnd = 8 + declaredRiff;
    std::int64_t position = firstChunk;
    bool padPending = false;
    std::size_t outside = 0;
    while (position < fileSize) {
        std::uint8_t header[8] = {};
        const auto headerBytes = static_cast<std::uint32_t>(std::min<std::int64_t>(8, fileSize - position));
        if (!input.SeekTo(position) || input.Read(header, headerBytes) != headerBytes)
            return Failed();
        const std::uint32_t id = ReadLittleEndian32(header);
        const bool inside = placeholder || position < declaredEnd;
        if (headerBytes < 8) {
            // A missing pad byte at the end of the file loses nothing.
            if (headerBytes == 1 && header[0] == 0 && padPending)
                break;
            if (inside && fileSize <= declaredEnd)
                return Refuse(FormatCount(fileSize - position) + " bytes at " + FormatCount(position) +
                              " belong to no chunk that the copy keeps");
            return Refuse(ChunkName(id) + " at " + FormatCount(position) + " is cut short inside its header");
        }
        if (id == kIdRiff)
            return Refuse((inside ? "a RIFF chunk inside the RIFF chunk at " : "a second RIFF chunk at ") +
                          FormatCount(position));
        if (!inside)
            ++outside;
        const std::uint32_t size32 = ReadLittleEndian32(header + 4);
        std::int64_t size = size32;
        if (fromRf64 && id == kIdData && size32 == kRf64DefersSize &&
            !Rf64DeferredDataSize(*plan.rf64, size, problem))
            return false;
        const std::int64_t present = fileSize - (position + 8);
        const bool unfinished = size == 0 || size > present || (!fromRf64 && size == 0xFFFFFFFF);
        if (id == kIdData && present > 0 && unfinished) {
            if (!CopyPlaceholderData(position, size))
                return false;
            break;
        }
        if (size > present) {
            changes.push_back(ChunkName(id) + ": " + FormatCount(size) + " bytes declared, " + FormatCount(present) +
                              " present");
            size = present;
        }
        // An MD5 chunk of the input gives way to the copy's own.
        if (!(plan.storeMd5 && id == kIdMd5) && !WriteChunk(id, position + 8, size))
            return false;
        md5Replaced = md5Replaced || (plan.storeMd5 && id == kIdMd5);
        // No size is below 0 nor past the end of the file here, so each
        // chunk moves the walk on; should one ever not, the copy is refused
        // rather than written for ever.
        const std::int64_t next = position + 8 + size + size % 2;
        if (next <= position)
            return Refuse(ChunkName(id) + " at " + FormatCount(position) + " leaves the walk where it stands");
        position = next;
        padPending = size % 2 == 1;
    }
    if (outside > 0)
        changes.push_back(std::to_string(outside) + (outside == 1 ? " chunk" : " chunks") +
                          " behind the declared end of RIFF taken into it");
    return true;
}

// The audio of a data chunk at position whose size was never written: up
// to the one run of chunks that ends the file, in whole frames; then that
// run as it stands.
bool TidyWalk::CopyPlaceholderData(std::int64_t position, std::int64_t declared)
{
    const std::uint32_t blockAlign = plan.blockAlign;
    if (blockAlign == 0)
        return Refuse("the data can't be written without a format of at least one channel and one byte per frame");
    const std::int64_t audioStart = position + 8;
    AudioEnd end;
    if (!end.Find(input, audioStart, fileSize))
        return Failed();
    if (end.Starts().size() > 1) {
        const std::int64_t first = end.Starts()[0], second = end.Starts()[1];
        return Refuse("where the audio of data at " + FormatCount(position) + " ends can't be told: " +
                      FormatCount(first - audioStart) + " bytes and then " + end.Describe(first, fileSize) + ", or " +
                      FormatCount(second - audioStart) + " bytes and then " + end.Describe(second, fileSize));
    }
    const std::int64_t audioEnd = end.Starts().empty() ? fileSize : end.Starts()[0];
    std::int64_t present = audioEnd - audioStart;
    // Whole frames of an odd length and then a zero: their pad byte.
    const std::int64_t unpadded = present - 1;
    if (unpadded % 2 == 1 && unpadded % blockAlign == 0 && end.ByteAt(audioEnd - 1, fileSize) == 0)
        present = unpadded;
    changes.push_back("data: " + FormatCount(declared) + " bytes declared, " + FormatCount(present) + " present");
    const std::int64_t partial = present % blockAlign;
    if (partial > 0)
        changes.push_back("data: a partial frame of " + FormatCount(partial) + (partial == 1 ? " byte" : " bytes") +
                          " cut");
    if (!WriteChunk(kIdData, audioStart, present - partial))
        return false;
    if (audioEnd < fileSize) {
        changes.push_back("chunks behind the audio kept: " + end.Describe(audioEnd, fileSize));
        if (!writer.CopyBytes(audioEnd, fileSize - audioEnd))
            return Failed();
    }
    return true;
}

// A chunk of the input with the size given. Only RF64's data chunk, whose
// size field defers to ds64, may hold 4 GiB or more.
bool TidyWalk::WriteChunk(std::uint32_t id, std::int64_t body, std::int64_t size)
{
    if (size > 0xFFFFFFFFLL && !(writer.IsRf64() && id == kIdData) && run != Run::Dry)
        return Refuse(ChunkName(id) + " of " + FormatCount(size) + " bytes can't be written");
    return writer.WriteChunk(id, body, size) || Failed();
}

// The MD5 of the copy's audio in a chunk of its own behind the others, and
// a line in changes that says so.
bool TidyWalk::StoreMd5()
{
    if (!plan.storeMd5)
        return true;
    platform::Md5Digest digest{};
    if (!writer.WriteMd5Chunk(digest))
        return Refuse("there is no data chunk whose MD5 the copy could store");
    if (run != Run::Dry)
        changes.push_back("MD5 of the audio stored" + std::string(md5Replaced ? " in place of the one there" : "") +
                          ": " + Md5Hex(digest));
    return true;
}

// The sizes known only now: the RIFF size, or ds64's sizes; each said in
// changes, first, where it differs from the input's.
bool TidyWalk::FinishSizes()
{
    const std::int64_t newSize = writer.Written() - 8;
    if (run == Run::Dry)
        return true;
    if (writer.IsRf64()) {
        if (!writer.FinishRf64(newSize, plan.blockAlign))
            return Failed();
        if (!fromRf64)
            changes.insert(changes.begin(), "written as RF64: the copy passes 4 GiB");
        else if (newSize != declaredRiff)
            changes.insert(changes.begin(), "ds64 RIFF size " + FormatCount(declaredRiff) + " -> " + FormatCount(newSize));
        return true;
    }
    if (newSize > 0xFFFFFFFFLL)
        return Refuse("the copy would pass 4 GiB");
    if (!writer.FinishRiff(static_cast<std::uint32_t>(newSize)))
        return Failed();
    if (newSize != riffSize)
        changes.insert(changes.begin(), "RIFF size " + FormatCount(riffSize) + " -> " + FormatCount(newSize));
    return true;
}

bool TidyWalk::Failed()
{
    return Refuse("the copy could not be written in full");
}

bool TidyWalk::Refuse(const std::string& why)
{
    problem = why;
    return false;
}
