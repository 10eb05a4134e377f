#include "check/TidyCopy.h"

#include "base/Utf8.h"
#include "check/TextFormat.h"
#include "check/FileFacts.h"
#include "platform/FileSystem.h"
#include "wave/ChunkRun.h"
#include "wave/DataChunk.h"
#include "wave/FormatChunk.h"
#include "wave/FourCc.h"
#include "wave/RootChunk.h"
#include "wave/WaveDocument.h"

#include "files/FileStream.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr std::int64_t kRootHeaderBytes = 12;

std::string Name(std::uint32_t id)
{
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto byte = static_cast<char>(id >> shift);
        text += byte >= 0x20 && byte < 0x7F ? byte : '?';
    }
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

// How many chunks a list holds, each record of a run counted.
std::size_t CountChunks(const Array<std::unique_ptr<Chunk>>& list)
{
    std::size_t count = 0;
    for (const auto& chunk : list) {
        const auto* run = dynamic_cast<const ChunkRun*>(chunk.get());
        count += run ? run->Count() : 1;
    }
    return count;
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

class Mender {
public:
    Mender(FileStream& input, std::int64_t fileSize, std::uint32_t blockAlign, std::vector<std::string>& changes,
           std::string& problem)
        : input(input), fileSize(fileSize), blockAlign(blockAlign), changes(changes), problem(problem)
    {
    }

    // The chunks of a RIFF chunk must follow one another without a gap,
    // each on the even position behind the one before, up to expectedEnd;
    // bodies that run past the end of the file are cut to what is there. A
    // data chunk whose size is a placeholder ends the walk: its audio runs
    // up to the chunks written behind it, which the copy takes as they are.
    bool MendChildren(const Chunk& parent, std::int64_t expectedEnd)
    {
        next = parent.GetPosition() + kRootHeaderBytes;
        for (const auto& child : parent.GetChildren()) {
            ++childrenKept;
            if (auto* run = dynamic_cast<ChunkRun*>(child.get())) {
                for (std::size_t i = 0; i < run->Count(); ++i) {
                    const ChunkRun::Record& record = run->At(i);
                    std::int64_t size = record.size;
                    if (!MendChild(record.id, record.position, size, Kind::WrittenAsRead))
                        return false;
                    run->SetSizeAt(i, static_cast<std::uint32_t>(size));
                }
                continue;
            }
            Kind kind = Kind::WrittenAsRead;
            if (dynamic_cast<const RootChunk*>(child.get()))
                kind = Kind::Riff;
            else if (dynamic_cast<const DataChunk*>(child.get()))
                kind = Kind::Data;
            std::int64_t size = child->GetSize();
            if (!MendChild(child->GetId(), child->GetPosition(), size, kind))
                return false;
            child->SetSize(size);
            if (tailStart >= 0)
                return true;
        }
        return CheckGap(next, std::min(expectedEnd, fileSize));
    }

    // How many children of the RIFF chunk the copy writes from the tree, and
    // where the chunks behind a placeholder's audio begin (-1 for none).
    std::size_t ChildrenKept() const { return childrenKept; }
    std::int64_t TailStart() const { return tailStart; }

private:
    enum class Kind { Riff, Data, WrittenAsRead };

    // One child, whether held whole or as a record: refuses it, or cuts its
    // size to what the file holds.
    bool MendChild(std::uint32_t id, std::int64_t position, std::int64_t& size, Kind kind)
    {
        const auto at = [&] { return Name(id) + " at " + FormatCount(position); };
        if (!CheckGap(next, position))
            return false;
        if (size < 0 || position + 8 > fileSize)
            return Refuse(at() + " is cut short inside its header");
        if (kind == Kind::Riff)
            return Refuse("a RIFF chunk inside the RIFF chunk at " + FormatCount(position));
        const std::int64_t present = fileSize - (position + 8);
        const bool placeholder = kind == Kind::Data && present > 0 &&
                                 (size == 0 || size == 0xFFFFFFFF || size > present);
        if (placeholder)
            return MendPlaceholder(position, size);
        if (size > present) {
            changes.push_back(Name(id) + ": " + FormatCount(size) + " bytes declared, " + FormatCount(present) +
                              " present");
            size = present;
        }
        next = position + 8 + size;
        next += next % 2;
        return true;
    }

    // The audio of a data chunk at position whose size was never written:
    // up to the one run of chunks that ends the file, in whole frames.
    bool MendPlaceholder(std::int64_t position, std::int64_t& size)
    {
        const std::int64_t audioStart = position + 8;
        AudioEnd end;
        if (!end.Find(input, audioStart, fileSize))
            return Refuse("the file can't be read behind the data chunk at " + FormatCount(position));
        std::int64_t audioEnd = fileSize;
        if (end.Starts().size() > 1) {
            const std::int64_t first = end.Starts()[0], second = end.Starts()[1];
            return Refuse("where the audio of data at " + FormatCount(position) + " ends can't be told: " +
                          FormatCount(first - audioStart) + " bytes and then " + end.Describe(first, fileSize) +
                          ", or " + FormatCount(second - audioStart) + " bytes and then " +
                          end.Describe(second, fileSize));
        }
        if (!end.Starts().empty())
            audioEnd = end.Starts()[0];
        const std::int64_t present = audioEnd - audioStart;
        changes.push_back("data: " + FormatCount(size) + " bytes declared, " + FormatCount(present) + " present");
        const std::int64_t partial = blockAlign > 0 ? present % blockAlign : 0;
        if (partial > 0)
            changes.push_back("data: a partial frame of " + FormatCount(partial) + (partial == 1 ? " byte" : " bytes") +
                              " cut");
        size = present - partial;
        if (size > 0xFFFFFFFFLL)
            return Refuse("the audio of data at " + FormatCount(position) + " is over 4 GiB");
        if (audioEnd < fileSize)
            changes.push_back("chunks behind the audio kept: " + end.Describe(audioEnd, fileSize));
        tailStart = audioEnd;
        return true;
    }

    // Bytes between next and position belong to no chunk that is kept; a
    // missing pad byte at the end of the file loses nothing.
    bool CheckGap(std::int64_t next, std::int64_t position)
    {
        if (position <= next || (position == fileSize && next == fileSize + 1))
            return true;
        return Refuse(FormatCount(position - next) + " bytes at " + FormatCount(next) +
                      " belong to no chunk that the copy keeps");
    }

    bool Refuse(const std::string& why)
    {
        problem = why;
        return false;
    }

    FileStream& input;
    std::int64_t fileSize;
    std::uint32_t blockAlign;
    std::vector<std::string>& changes;
    std::string& problem;
    std::int64_t next = 0;
    std::size_t childrenKept = 0;
    std::int64_t tailStart = -1;
};

// Writes the copy: the RIFF header, each chunk as it stands in the input
// with its mended size (the format chunk too, whatever its length), and the
// bytes behind a placeholder's audio as they are.
class CopyWriter {
public:
    CopyWriter(FileStream& input, FileStream& target) : input(input), target(target), buffer(1024 * 1024) {}

    bool Write(const Chunk& root, std::size_t childrenKept, std::int64_t tailStart, std::int64_t fileSize)
    {
        if (!Put("RIFF\0\0\0\0WAVE", 12))
            return false;
        std::size_t index = 0;
        for (const auto& child : root.GetChildren()) {
            if (index++ == childrenKept)
                break;
            if (const auto* run = dynamic_cast<const ChunkRun*>(child.get())) {
                for (std::size_t i = 0; i < run->Count(); ++i) {
                    const ChunkRun::Record& record = run->At(i);
                    if (!WriteChunk(record.id, record.position, record.size))
                        return false;
                }
            } else if (!WriteChunk(child->GetId(), child->GetPosition(), child->GetSize())) {
                return false;
            }
        }
        if (tailStart >= 0 && !Copy(tailStart, fileSize - tailStart))
            return false;
        const std::int64_t end = target.GetSize();
        const auto riffSize = static_cast<std::uint32_t>(end - 8);
        const std::uint8_t size[4] = {static_cast<std::uint8_t>(riffSize), static_cast<std::uint8_t>(riffSize >> 8),
                                      static_cast<std::uint8_t>(riffSize >> 16), static_cast<std::uint8_t>(riffSize >> 24)};
        return end - 8 <= 0xFFFFFFFFLL && target.SeekTo(4) && Put(size, 4) && target.SeekTo(end);
    }

private:
    bool WriteChunk(std::uint32_t id, std::int64_t position, std::int64_t size)
    {
        const auto bodySize = static_cast<std::uint32_t>(size);
        const std::uint8_t header[8] = {static_cast<std::uint8_t>(id), static_cast<std::uint8_t>(id >> 8),
                                        static_cast<std::uint8_t>(id >> 16), static_cast<std::uint8_t>(id >> 24),
                                        static_cast<std::uint8_t>(bodySize), static_cast<std::uint8_t>(bodySize >> 8),
                                        static_cast<std::uint8_t>(bodySize >> 16), static_cast<std::uint8_t>(bodySize >> 24)};
        return Put(header, 8) && Copy(position + 8, size) && (size % 2 == 0 || Put("", 1));
    }

    bool Copy(std::int64_t from, std::int64_t count)
    {
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

    bool Put(const void* bytes, std::uint32_t count) { return target.Write(bytes, count) == count; }

    FileStream& input;
    FileStream& target;
    std::vector<std::uint8_t> buffer;
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
        problem = WideToUtf8(output.View()) + " exists; the copy goes to a new path only";
        return false;
    }

    // The writer needs the whole tree, so a file of millions of chunks costs
    // memory in proportion: compact form holds it down to a record a chunk.
    WaveDocument document;
    document.SetTreeForm(TreeForm::Compact);
    document.Open(input);
    const std::int64_t fileSize = GetDocumentFileSize(document);
    if (document.GetContainerKind() != kContainerRiff || document.GetChunks().IsEmpty()) {
        problem = "not a RIFF file";
        return false;
    }
    auto* root = dynamic_cast<RootChunk*>(document.GetChunks().At(0).get());
    if (!root || root->GetPosition() != 0) {
        problem = "the file does not begin with its RIFF chunk";
        return false;
    }
    // Whatever the walk met behind the declared end of the RIFF chunk
    // belongs inside it.
    const std::size_t outside = CountChunks(document.GetChunks()) - 1;
    while (document.GetChunks().Count() > 1) {
        if (dynamic_cast<const RootChunk*>(document.GetChunks().At(1).get())) {
            problem = "a second RIFF chunk at " + FormatCount(document.GetChunks().At(1)->GetPosition());
            return false;
        }
        root->AdoptChild(document.TakeChunk(1));
    }
    if (outside > 0)
        changes.push_back(std::to_string(outside) + (outside == 1 ? " chunk" : " chunks") +
                          " behind the declared end of RIFF taken into it");
    const FormatChunk* format = document.GetFormatChunk();
    if (document.GetDataChunk() && (!format || format->GetFormat().channels < 1 || format->GetFormat().blockAlign < 1)) {
        problem = "the data can't be written without a format of at least one channel and one byte per frame";
        return false;
    }
    FileStream source;
    if (!source.OpenPlain(input, platform::kFileAttributeNormal)) {
        problem = "the file can't be opened for reading";
        return false;
    }
    Mender mender(source, fileSize, format ? format->GetFormat().blockAlign : 0, changes, problem);
    if (!mender.MendChildren(*root, fileSize))
        return false;

    FileStream target;
    WideString temporary;
    if (!CreateTemporary(output, target, temporary)) {
        problem = "can't make a file beside " + WideToUtf8(output.View());
        return false;
    }
    const bool written = CopyWriter(source, target).Write(*root, mender.ChildrenKept(), mender.TailStart(), fileSize) &&
                         target.Flush();
    const std::int64_t newRiffSize = target.GetSize() - 8;
    target.Close();
    if (!written) {
        platform::RemoveFile(temporary.View());
        problem = "the copy could not be written in full";
        return false;
    }
    if (!platform::RenameFileNoReplace(temporary.View(), output.View())) {
        platform::RemoveFile(temporary.View());
        problem = "can't give the copy the name " + WideToUtf8(output.View());
        return false;
    }
    // The new name is on the disk only once its folder is.
    platform::FlushFolderOf(output.View());
    if (newRiffSize != root->GetSize())
        changes.insert(changes.begin(), "RIFF size " + FormatCount(root->GetSize()) + " -> " + FormatCount(newRiffSize));
    return true;
}
