#include "mend/TidyCopy.h"

#include "base/TextFormat.h"
#include "base/Utf8.h"
#include "files/FileStream.h"
#include "platform/FileSystem.h"
#include "wave/DataChunk.h"
#include "wave/FileFacts.h"
#include "wave/FormatChunk.h"
#include "wave/FourCc.h"
#include "wave/Rf64File.h"
#include "wave/WaveDocument.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr std::int64_t kRootHeaderBytes = 12;

// A chunk's name in a message: its id, without the spaces that pad it.
std::string Name(std::uint32_t id)
{
    std::string text = ChunkIdText(id);
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

// The end of the audio of a data chunk whose size is a placeholder, from
// the chunks behind it: a run of well-formed chunks (ids of printable
// ASCII, each behind the one before, on its pad byte) that ends exactly at
// the end of the file. The run is looked for in the last kTailWindow bytes
// of the file; chunks written behind the audio are small.
constexpr std::int64_t kTailWindow = 16 * 1024 * 1024;

bool IsIdByte(std::uint8_t byte)
{
    return byte >= 0x20 && byte <= 0x7E;
}

bool IsPlainId(const std::uint8_t* id)
{
    for (int i = 0; i < 4; ++i) {
        const char c = static_cast<char>(id[i]);
        if (!((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == ' ' || c == '_'))
            return false;
    }
    return true;
}

class AudioEnd {
public:
    // False when the file can't be read.
    bool Find(FileStream& input, std::int64_t audioStart, std::int64_t fileSize)
    {
        const std::int64_t from = std::max(audioStart, fileSize - kTailWindow);
        tail.resize(static_cast<std::size_t>(fileSize - from));
        if (!input.SeekTo(from) || input.Read(tail.data(), static_cast<std::uint32_t>(tail.size())) != tail.size())
            return false;
        // reaches[i]: a run of chunks from from + i reaches the end exactly.
        std::vector<std::uint8_t> reaches(tail.size() + 2, 0);
        reaches[tail.size()] = 1;
        starts.clear();
        for (std::size_t i = tail.size(); i-- > 0;) {
            if (i + 8 > tail.size() || !IsIdByte(tail[i]) || !IsIdByte(tail[i + 1]) || !IsIdByte(tail[i + 2]) ||
                !IsIdByte(tail[i + 3]))
                continue;
            const std::uint64_t size = tail[i + 4] | tail[i + 5] << 8 | tail[i + 6] << 16 |
                                       static_cast<std::uint64_t>(tail[i + 7]) << 24;
            const std::uint64_t end = i + 8 + size;
            // The last chunk may go without its pad byte.
            if (end == tail.size() || (end + size % 2 <= tail.size() && reaches[end + size % 2]))
                reaches[i] = 1;
        }
        // The earliest run is the reading: every later position where a run
        // begins lies inside it (its later chunks, or a list's entries).
        // Its first chunk is taken for certain when its id is of letters,
        // digits, spaces and underscores, as the ids of writers are; audio
        // that merely looks like a chunk gives the next reading too.
        starts.clear();
        for (std::size_t i = 0; i < tail.size(); ++i) {
            if (!reaches[i])
                continue;
            starts.push_back(from + static_cast<std::int64_t>(i));
            if (!IsPlainId(tail.data() + i)) {
                const std::uint64_t size = tail[i + 4] | tail[i + 5] << 8 | tail[i + 6] << 16 |
                                           static_cast<std::uint64_t>(tail[i + 7]) << 24;
                starts.push_back(std::min<std::int64_t>(from + static_cast<std::int64_t>(i + 8 + size + size % 2),
                                                        from + static_cast<std::int64_t>(tail.size())));
            }
            break;
        }
        return true;
    }

    // Where the run of chunks behind the audio begins: none, one reading, or
    // two when the first can't be told for certain.
    const std::vector<std::int64_t>& Starts() const { return starts; }

    // The byte at a position of the file in the window; -1 outside it.
    int ByteAt(std::int64_t position, std::int64_t fileSize) const
    {
        const std::int64_t from = fileSize - static_cast<std::int64_t>(tail.size());
        return position >= from && position < fileSize ? tail[static_cast<std::size_t>(position - from)] : -1;
    }

    // The ids of the run of chunks from start, as a reader would list them.
    std::string Describe(std::int64_t start, std::int64_t fileSize) const
    {
        const std::int64_t from = fileSize - static_cast<std::int64_t>(tail.size());
        if (start >= fileSize)
            return "nothing";
        std::string ids;
        int count = 0;
        for (std::int64_t at = start; at + 8 <= fileSize && count < 4; ++count) {
            const std::uint8_t* header = tail.data() + (at - from);
            ids += (ids.empty() ? "" : ", ") + std::string(reinterpret_cast<const char*>(header), 4);
            const std::uint32_t size = header[4] | header[5] << 8 | header[6] << 16 | static_cast<std::uint32_t>(header[7]) << 24;
            at += 8 + std::int64_t{size} + size % 2;
        }
        return ids;
    }

private:
    std::vector<std::uint8_t> tail;
    std::vector<std::int64_t> starts;
};

// The copy, written as the input's chunks are walked: the RIFF header,
// then each chunk as it stands with its size mended, from the first chunk
// behind the form type to the end of the file, whatever the RIFF size
// says. Memory doesn't grow with the number of chunks.
class TidyWalk {
public:
    // A dry run reads the input but writes nothing: it tells the size of
    // the copy, so that a copy that would pass 4 GiB is written as RF64.
    enum class Run { Dry, Riff, Rf64 };

    // rf64 is the input's layout when it is an RF64 file, else null.
    TidyWalk(FileStream& input, FileStream& target, std::int64_t fileSize, std::uint32_t blockAlign,
             const Rf64Layout* rf64, std::vector<std::string>& changes, std::string& problem, Run run)
        : input(input), target(target), fileSize(fileSize), blockAlign(blockAlign), rf64(rf64), changes(changes),
          problem(problem), buffer(1024 * 1024), run(run)
    {
    }

    // The size of what was written, or would have been.
    std::int64_t Written() const { return written; }

    bool Copy()
    {
        std::uint8_t riff[12];
        if (!input.SeekTo(0) || input.Read(riff, 12) != 12 ||
            (std::memcmp(riff, "RIFF", 4) != 0 && std::memcmp(riff, "RF64", 4) != 0))
            return Refuse("the file does not begin with its RIFF chunk");
        const bool fromRf64 = std::memcmp(riff, "RF64", 4) == 0;
        const std::uint32_t riffSize = ReadLittleEndian32(riff + 4);
        std::int64_t declaredRiff = riffSize;
        std::int64_t position = kRootHeaderBytes;
        std::uint32_t ds64Size = 0;
        if (fromRf64) {
            // The ds64 chunk comes first; its 64-bit sizes, as the layout
            // read them, stand where a 32-bit size of 0xFFFFFFFF defers.
            if (!rf64 || !rf64->hasDs64)
                return Refuse("an RF64 file without its ds64 chunk");
            ds64Size = rf64->ds64Size;
            declaredRiff = rf64->riffSize;
            position += 8 + ds64Size + ds64Size % 2;
        }
        const bool placeholder = declaredRiff == 0 || declaredRiff == 0xFFFFFFFF;
        const std::int64_t declaredEnd = 8 + declaredRiff;

        // The header: RIFF as it was, or RF64 with a ds64 chunk, the input's
        // own (its table kept) or a new one.
        const bool toRf64 = run == Run::Rf64 || (run == Run::Dry && fromRf64);
        if (toRf64) {
            const std::uint8_t head[8] = {'R', 'F', '6', '4', 0xFF, 0xFF, 0xFF, 0xFF};
            if (!Put(head, 8) || !Put(riff + 8, 4))
                return Failed();
            ds64At = written + 8;
            if (fromRf64 ? !CopyChunkAsItStands(12, ds64Size) : !WriteNewDs64())
                return Failed();
        } else if (!Put(riff, 12)) {
            return Failed();
        }

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
                return Refuse(Name(id) + " at " + FormatCount(position) + " is cut short inside its header");
            }
            if (id == kIdRiff)
                return Refuse((inside ? "a RIFF chunk inside the RIFF chunk at " : "a second RIFF chunk at ") +
                              FormatCount(position));
            if (!inside)
                ++outside;
            const std::uint32_t size32 = ReadLittleEndian32(header + 4);
            std::int64_t size = size32;
            if (fromRf64 && id == kIdData && size32 == kDefers && !Rf64DeferredDataSize(*rf64, size, problem))
                return false;
            const std::int64_t present = fileSize - (position + 8);
            const bool unfinished = fromRf64 ? size == 0 || size > present : size == 0 || size == 0xFFFFFFFF || size > present;
            if (id == kIdData && present > 0 && unfinished) {
                if (!CopyPlaceholderData(position, size))
                    return false;
                break;
            }
            if (size > present) {
                changes.push_back(Name(id) + ": " + FormatCount(size) + " bytes declared, " + FormatCount(present) +
                                  " present");
                size = present;
            }
            if (!WriteChunk(id, position + 8, size))
                return false;
            // No size is below 0 nor past the end of the file here, so each
            // chunk moves the walk on; should one ever not, the copy is
            // refused rather than written for ever.
            const std::int64_t next = position + 8 + size + size % 2;
            if (next <= position)
                return Refuse(Name(id) + " at " + FormatCount(position) + " leaves the walk where it stands");
            position = next;
            padPending = size % 2 == 1;
        }
        if (outside > 0)
            changes.push_back(std::to_string(outside) + (outside == 1 ? " chunk" : " chunks") +
                              " behind the declared end of RIFF taken into it");
        const std::int64_t newSize = written - 8;
        if (run == Run::Dry)
            return true;
        if (toRf64) {
            // The 64-bit sizes, and the frames of the audio.
            std::uint8_t sizes[24];
            PutU64(sizes, newSize);
            PutU64(sizes + 8, dataBytes);
            PutU64(sizes + 16, blockAlign ? dataBytes / blockAlign : 0);
            if (!PatchAt(ds64At, sizes, 24))
                return Failed();
            if (!fromRf64)
                changes.insert(changes.begin(), "written as RF64: the copy passes 4 GiB");
            else if (newSize != declaredRiff)
                changes.insert(changes.begin(), "ds64 RIFF size " + FormatCount(declaredRiff) + " -> " + FormatCount(newSize));
            return true;
        }
        if (newSize > 0xFFFFFFFFLL)
            return Refuse("the copy would pass 4 GiB");
        std::uint8_t sizeField[4];
        PutU32(sizeField, static_cast<std::uint32_t>(newSize));
        if (!PatchAt(4, sizeField, 4))
            return Failed();
        if (newSize != riffSize)
            changes.insert(changes.begin(), "RIFF size " + FormatCount(riffSize) + " -> " + FormatCount(newSize));
        return true;
    }

private:
    // The audio of a data chunk at position whose size was never written:
    // up to the one run of chunks that ends the file, in whole frames; then
    // that run as it stands.
    bool CopyPlaceholderData(std::int64_t position, std::int64_t declared)
    {
        if (blockAlign == 0)
            return Refuse("the data can't be written without a format of at least one channel and one byte per frame");
        const std::int64_t audioStart = position + 8;
        AudioEnd end;
        if (!end.Find(input, audioStart, fileSize))
            return Failed();
        if (end.Starts().size() > 1) {
            const std::int64_t first = end.Starts()[0], second = end.Starts()[1];
            return Refuse("where the audio of data at " + FormatCount(position) + " ends can't be told: " +
                          FormatCount(first - audioStart) + " bytes and then " + end.Describe(first, fileSize) +
                          ", or " + FormatCount(second - audioStart) + " bytes and then " +
                          end.Describe(second, fileSize));
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
            if (!CopyBytes(audioEnd, fileSize - audioEnd))
                return Failed();
        }
        if (blockAlign == 0)
            return true;
        return true;
    }

    // A chunk from the input with the size given. In an RF64 copy the data
    // chunk's size field defers to ds64; a chunk of 4 GiB or more can only
    // be that one.
    bool WriteChunk(std::uint32_t id, std::int64_t body, std::int64_t size)
    {
        const bool toRf64 = ds64At >= 0;
        if (id == kIdData)
            dataBytes = size;
        if (size > 0xFFFFFFFFLL && !(toRf64 && id == kIdData) && run != Run::Dry)
            return Refuse(Name(id) + " of " + FormatCount(size) + " bytes can't be written");
        std::uint8_t header[8];
        PutU32(header, id);
        PutU32(header + 4, toRf64 && id == kIdData ? kDefers : static_cast<std::uint32_t>(size));
        if (!Put(header, 8) || !CopyBytes(body, size) || !(size % 2 == 0 || Put("", 1)))
            return Failed();
        return true;
    }

    bool CopyChunkAsItStands(std::int64_t position, std::uint32_t size)
    {
        std::uint8_t header[8];
        return input.SeekTo(position) && input.Read(header, 8) == 8 && Put(header, 8) &&
               CopyBytes(position + 8, size) && (size % 2 == 0 || Put("", 1));
    }

    bool WriteNewDs64()
    {
        std::uint8_t chunk[36] = {'d', 's', '6', '4', 28};
        return Put(chunk, 36);
    }

    bool CopyBytes(std::int64_t from, std::int64_t count)
    {
        if (run == Run::Dry) {
            written += count;
            return true;
        }
        if (!input.SeekTo(from))
            return false;
        while (count > 0) {
            const auto piece = static_cast<std::uint32_t>(std::min<std::int64_t>(count, buffer.size()));
            if (input.Read(buffer.data(), piece) != piece || !Put(buffer.data(), piece))
                return false;
            count -= piece;
        }
        return true;
    }

    bool Put(const void* bytes, std::uint32_t count)
    {
        written += count;
        return run == Run::Dry || target.Write(bytes, count) == count;
    }

    // Writes over what was written at position, and comes back to the end.
    bool PatchAt(std::int64_t position, const std::uint8_t* bytes, std::uint32_t count)
    {
        return target.SeekTo(position) && target.Write(bytes, count) == count && target.SeekTo(written);
    }

    static std::uint32_t ReadLittleEndian32(const std::uint8_t* bytes)
    {
        return bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
    }
    static void PutU32(std::uint8_t* bytes, std::uint32_t value)
    {
        for (int i = 0; i < 4; ++i)
            bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
    static void PutU64(std::uint8_t* bytes, std::int64_t value)
    {
        PutU32(bytes, static_cast<std::uint32_t>(value));
        PutU32(bytes + 4, static_cast<std::uint32_t>(static_cast<std::uint64_t>(value) >> 32));
    }

    bool Failed() { return Refuse("the copy could not be written in full"); }

    bool Refuse(const std::string& why)
    {
        problem = why;
        return false;
    }

    FileStream& input;
    FileStream& target;
    std::int64_t fileSize;
    std::uint32_t blockAlign;
    const Rf64Layout* rf64;
    std::vector<std::string>& changes;
    std::string& problem;
    std::vector<std::uint8_t> buffer;
    Run run;
    std::int64_t written = 0;
    std::int64_t ds64At = -1;    // where the ds64 sizes stand in an RF64 copy
    std::int64_t dataBytes = 0;  // the audio written
    bool padPending = false;
    static constexpr std::uint32_t kDefers = 0xFFFFFFFF;
};

// A free name beside output for the file being written.
bool CreateTemporary(const WideString& output, FileStream& stream, WideString& temporary)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = output + WideString::FromAscii(".partial-" + std::to_string(attempt));
        if (stream.CreateNew(temporary, false))
            return true;
    }
    return false;
}

} // namespace

bool MakeTidyCopy(const WideString& input, const WideString& output, std::vector<std::string>& changes,
                  std::string& problem)
{
    changes.clear();
    if (!IsExistingFile(input)) {
        problem = "no such file";
        return false;
    }
    if (platform::GetPathAttributes(output.View()) != platform::kInvalidFileAttributes) {
        problem = WideToPathUtf8(output.View()) + " exists; the copy goes to a new path only";
        return false;
    }

    // The reader finds the format, which the audio's frames are cut by.
    // An RF64 file, which the reader takes for one that is not RIFF, gives
    // its format through its own layout.
    std::uint32_t blockAlign = 0;
    bool hasData = false;
    Rf64Layout layout;
    const bool inputRf64 = IsRf64File(input);
    if (inputRf64) {
        std::string why;
        if (!ReadRf64Layout(input, layout, why)) {
            // A header cut short is no more RF64 than it is RIFF.
            problem = layout.fileSize < kRootHeaderBytes ? "not a RIFF file" : why;
            return false;
        }
        if (layout.formatBytes >= 16)
            blockAlign = static_cast<std::uint16_t>(layout.format[12] | layout.format[13] << 8);
        hasData = layout.dataPosition >= 0;
    } else {
        WaveDocument document;
        document.SetTreeForm(TreeForm::SlotsOnly);
        document.Open(input);
        if (document.GetContainerKind() != kContainerRiff) {
            problem = "not a RIFF file";
            return false;
        }
        const FormatChunk* format = document.GetFormatChunk();
        if (format && format->GetFormat().channels >= 1)
            blockAlign = format->GetFormat().blockAlign;
        hasData = document.GetDataChunk() != nullptr;
    }
    if (hasData && blockAlign < 1) {
        problem = "the data can't be written without a format of at least one channel and one byte per frame";
        return false;
    }

    FileStream source;
    if (!source.OpenPlain(input, platform::kFileAttributeNormal)) {
        problem = "the file can't be opened for reading";
        return false;
    }
    source.EnableReadAhead(64 * 1024);
    FileStream target;
    WideString temporary;
    if (!CreateTemporary(output, target, temporary)) {
        problem = "can't make a file beside " + WideToPathUtf8(output.View());
        return false;
    }
    // A dry run first: a RIFF copy that would pass 4 GiB is written as RF64.
    const std::int64_t fileSize = source.GetSize();
    const Rf64Layout* rf64Input = inputRf64 ? &layout : nullptr;
    TidyWalk dry(source, target, fileSize, blockAlign, rf64Input, changes, problem, TidyWalk::Run::Dry);
    bool written = dry.Copy();
    const bool rf64 = inputRf64 || dry.Written() - 8 > 0xFFFFFFFFLL;
    changes.clear();
    written = written && TidyWalk(source, target, fileSize, blockAlign, rf64Input, changes, problem,
                                  rf64 ? TidyWalk::Run::Rf64 : TidyWalk::Run::Riff)
                             .Copy() &&
              target.Flush();
    target.Close();
    if (!written) {
        platform::RemoveFile(temporary.View());
        if (problem.empty())
            problem = "the copy could not be written in full";
        return false;
    }
    if (!platform::RenameFileNoReplace(temporary.View(), output.View())) {
        platform::RemoveFile(temporary.View());
        problem = "can't give the copy the name " + WideToPathUtf8(output.View());
        return false;
    }
    // The new name is on the disk only once its folder is.
    platform::FlushFolderOf(output.View());
    return true;
}
