#include "cli/ChunkList.h"

#include "base/TextFormat.h"
#include "base/Utf8.h"
#include "wave/ChunkObserver.h"
#include "wave/FileLayout.h"
#include "files/FileStream.h"
#include "wave/InfoChunk.h"
#include "wave/ListChunk.h"
#include "wave/Md5Chunk.h"
#include "wave/RootChunk.h"
#include "wave/WaveDocument.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

// The same for JSON: each byte as the character of that number.
std::u16string IdUnits(std::uint32_t id)
{
    std::u16string units;
    for (int shift = 0; shift < 32; shift += 8)
        units += static_cast<char16_t>((id >> shift) & 0xFF);
    return units;
}

// An INFO text without the zero bytes that end it on disk.
std::u16string_view Trimmed(const WideString& text)
{
    std::u16string_view view = text.View();
    while (!view.empty() && view.back() == u'\0')
        view.remove_suffix(1);
    return view;
}

// The hash that an MD5 chunk of 16 bytes at position holds, read through a
// stream of its own while the walk's reads the chunks around it; empty for
// another chunk, or one that can't be read.
std::string StoredHashAt(const WideString& path, std::uint32_t id, std::int64_t position, std::int64_t size)
{
    if (id != kIdMd5 || size != kMd5ChunkBytes)
        return "";
    FileStream stream;
    StoredMd5 stored;
    stored.position = position;
    stored.size = size;
    return stream.OpenPlain(path, platform::kFileAttributeNormal) && ReadStoredMd5(stream, stored)
               ? Md5Hex(stored.digest)
               : "";
}

void PutProblem(bool json, TextSink& sink, const std::string& problem)
{
    if (json) {
        std::string text = ", \"error\": ";
        AppendJsonString(text, Utf8ToWide(problem));
        sink.Put(text + "}");
    } else {
        sink.Put("(" + problem + ")\n");
    }
}

// The RIFF chunks nested in others that the walk will drop after their
// header was read: it gives up a walk nested too deep all the way up. A
// first walk finds them, so that the listing of a second one can leave out
// what the document would not keep.
class DroppedRiffFinder : public ChunkObserver {
public:
    void RiffOpened(const RootChunk&) override { ++depth; }
    void RiffClosed(const RootChunk& chunk, bool read) override
    {
        --depth;
        if (!read && depth > 0)
            positions.push_back(chunk.GetPosition());
    }
    void Kept(const Chunk&) override {}

    // Positions in the order the walk met their ends.
    std::vector<std::int64_t> positions;

private:
    int depth = 0;
};

// Writes each chunk of a walk as the document keeps it, in the order of
// the whole tree: a RIFF chunk as soon as its header is read, every other
// chunk once it is kept, with what it holds. Only the RIFF chunks open
// around the walk's place are remembered.
class Lister : public ChunkObserver {
public:
    Lister(bool json, TextSink& sink, std::int64_t fileSize, const WaveDocument& document,
           std::vector<std::int64_t> droppedRiffs, const WideString& path)
        : json(json), sink(sink), fileSize(fileSize), document(document), droppedRiffs(std::move(droppedRiffs)),
          path(path)
    {
        std::sort(this->droppedRiffs.begin(), this->droppedRiffs.end());
    }

    void RiffOpened(const RootChunk& chunk) override
    {
        if (skippedDepth > 0 || std::binary_search(droppedRiffs.begin(), droppedRiffs.end(), chunk.GetPosition())) {
            ++skippedDepth;
            return;
        }
        closed = nullptr;
        PutKeptBeforeRiff();
        const std::int64_t end = Visit(chunk, Depth(), ParentEnd(), false);
        openEnds.push_back(end);
    }

    void RiffClosed(const RootChunk& chunk, bool read) override
    {
        closed = nullptr;
        if (skippedDepth > 0) {
            --skippedDepth;
            return;
        }
        openEnds.pop_back();
        // The chunk is kept next, unless it failed inside another RIFF chunk.
        if (read || openEnds.empty())
            closed = &chunk;
    }

    void Kept(const Chunk& chunk) override
    {
        // Before the first RIFF id, a top-level chunk stays only while it
        // holds a registry slot: those left when RIFF is met come first.
        const bool written = &chunk == closed;
        closed = nullptr;
        if (skippedDepth > 0 || document.GetContainerKind() != kContainerRiff)
            return;
        PutKeptBeforeRiff();
        // A RIFF chunk was written when it was opened.
        if (!written)
            Visit(chunk, Depth(), ParentEnd(), true);
    }

    // The top-level chunks kept before the RIFF id, when nothing else came.
    void Finish() { PutKeptBeforeRiff(); }

    bool AllFit() const { return allFit; }
    bool WroteAny() const { return !first; }

private:
    int Depth() const { return static_cast<int>(openEnds.size()); }
    std::int64_t ParentEnd() const { return openEnds.empty() ? -1 : openEnds.back(); }

    void PutKeptBeforeRiff()
    {
        if (metRiff || document.GetContainerKind() != kContainerRiff)
            return;
        metRiff = true;
        for (const auto& chunk : document.GetChunks())
            Visit(*chunk, 0, -1, true);
    }

    // A chunk and what it holds. The end of a chunk that reads its own size
    // lies 8 bytes behind its id; a list's child, which has its size from
    // the list, starts 4 bytes before its body.
    // withChildren is false for a RIFF chunk whose children are still to
    // be read. Gives the end of the chunk.
    std::int64_t Visit(const Chunk& chunk, int depth, std::int64_t parentEnd, bool withChildren)
    {
        // A size field cut short leaves the size at -1: no end to mark.
        const bool sized = chunk.GetSize() >= 0;
        const std::int64_t end = chunk.GetPosition() + (chunk.ReadsOwnSize() ? 8 : 4) + chunk.GetSize();
        const bool pastFile = sized && end > fileSize;
        const bool pastParent = sized && parentEnd >= 0 && end > parentEnd;
        allFit = allFit && sized && !pastFile && !pastParent;

        const Chunk* listChild = nullptr;
        if (dynamic_cast<const ListChunk*>(&chunk) && !chunk.GetChildren().IsEmpty())
            listChild = chunk.GetChildren().At(0).get();
        std::uint32_t form = 0;
        if (const auto* root = dynamic_cast<const RootChunk*>(&chunk))
            form = root->GetFormType();
        const auto* info = listChild ? dynamic_cast<const InfoChunk*>(listChild) : nullptr;
        const std::string hash = StoredHashAt(path, chunk.GetId(), chunk.GetPosition(), chunk.GetSize());

        std::string line;
        if (json) {
            line = first ? "\n    " : ",\n    ";
            line += "{\"depth\": " + std::to_string(depth) + ", \"offset\": " + std::to_string(chunk.GetPosition()) +
                    ", \"id\": ";
            AppendJsonString(line, IdUnits(chunk.GetId()));
            line += ", \"size\": " + std::to_string(chunk.GetSize());
            if (form) {
                line += ", \"form\": ";
                AppendJsonString(line, IdUnits(form));
            }
            if (listChild) {
                line += ", \"list\": ";
                AppendJsonString(line, IdUnits(listChild->GetId()));
            }
            if (info) {
                line += ", \"info\": {";
                WideString key, value;
                for (std::int32_t i = 0; info->GetEntries().GetEntry(i, key, value); ++i) {
                    line += i ? ", " : "";
                    AppendJsonString(line, key.View());
                    line += ": ";
                    AppendJsonString(line, value.View());
                }
                line += "}";
            }
            line += hash.empty() ? "" : ", \"md5\": \"" + hash + "\"";
            line += std::string(", \"pastFileEnd\": ") + (pastFile ? "true" : "false") +
                    ", \"pastParentEnd\": " + (pastParent ? "true" : "false") + "}";
        } else {
            line = std::string(static_cast<std::size_t>(depth) * 2, ' ') + ChunkIdText(chunk.GetId()) + " at " +
                   FormatCount(chunk.GetPosition()) + ", " +
                   (sized ? FormatCount(chunk.GetSize()) + " bytes" : std::string("size field cut short"));
            if (form)
                line += ", form " + ChunkIdText(form);
            if (listChild)
                line += ", list " + ChunkIdText(listChild->GetId());
            if (info) {
                WideString key, value;
                for (std::int32_t i = 0; info->GetEntries().GetEntry(i, key, value); ++i)
                    line += (i ? ", " : ": ") + WideToUtf8(key.View()) + " \"" + WideToUtf8(Trimmed(value)) + "\"";
            }
            line += hash.empty() ? "" : ", md5 " + hash;
            if (pastFile)
                line += "; runs past the end of the file by " + FormatCount(end - fileSize) + " bytes";
            if (pastParent)
                line += "; runs past the end of its parent by " + FormatCount(end - parentEnd) + " bytes";
            line += "\n";
        }
        first = false;
        sink.Put(line);

        // A list's child is told on the list's line; what it holds in turn
        // follows as the list's own children.
        const Chunk& holder = listChild ? *listChild : chunk;
        if (withChildren) {
            for (const auto& child : holder.GetChildren())
                Visit(*child, depth + 1, end, true);
        }
        return end;
    }

    bool json;
    TextSink& sink;
    std::int64_t fileSize;
    const WaveDocument& document;
    std::vector<std::int64_t> droppedRiffs;
    const WideString& path;
    bool first = true;
    bool allFit = true;
    bool metRiff = false;
    std::vector<std::int64_t> openEnds;
    int skippedDepth = 0;
    const RootChunk* closed = nullptr;
};

// An RF64 file: its RF64 chunk and the chunks in it, each with the 64-bit
// size of ds64 beside a 32-bit field that defers to it.
bool ListRf64(const FileLayout& file, bool json, TextSink& sink)
{
    if (!file.HasRf64Layout()) {
        PutProblem(json, sink, file.GetRf64Problem());
        return false;
    }
    const Rf64Layout& layout = file.GetRf64Layout();
    bool allFit = true;
    const std::int64_t riffEnd = 8 + layout.riffSize;
    auto put = [&](bool first, int depth, std::uint32_t id, std::int64_t position, std::uint32_t size32,
                   std::int64_t size, std::uint32_t form, std::int64_t parentEnd) {
        const std::int64_t end = position + 8 + size;
        const bool pastFile = end > layout.fileSize;
        const bool pastParent = parentEnd >= 0 && end > parentEnd;
        allFit = allFit && !pastFile && !pastParent;
        const bool deferred = size32 == kRf64DefersSize && size != size32;
        const std::string hash = StoredHashAt(file.GetPath(), id, position, size);
        std::string line;
        if (json) {
            line = first ? "\n    " : ",\n    ";
            line += "{\"depth\": " + std::to_string(depth) + ", \"offset\": " + std::to_string(position) + ", \"id\": ";
            AppendJsonString(line, IdUnits(id));
            line += ", \"size\": " + std::to_string(size32);
            if (deferred)
                line += ", \"size64\": " + std::to_string(size);
            if (form) {
                line += ", \"form\": ";
                AppendJsonString(line, IdUnits(form));
            }
            if (!hash.empty())
                line += ", \"md5\": \"" + hash + "\"";
            line += std::string(", \"pastFileEnd\": ") + (pastFile ? "true" : "false") +
                    ", \"pastParentEnd\": " + (pastParent ? "true" : "false") + "}";
        } else {
            line = std::string(static_cast<std::size_t>(depth) * 2, ' ') + ChunkIdText(id) + " at " + FormatCount(position) +
                   ", " + FormatCount(size32) + " bytes";
            if (deferred)
                line += " (ds64: " + FormatCount(size) + ")";
            if (form)
                line += ", form " + ChunkIdText(form);
            if (!hash.empty())
                line += ", md5 " + hash;
            if (pastFile)
                line += "; runs past the end of the file by " + FormatCount(end - layout.fileSize) + " bytes";
            if (pastParent)
                line += "; runs past the end of its parent by " + FormatCount(end - parentEnd) + " bytes";
            line += "\n";
        }
        sink.Put(line);
    };
    if (json)
        sink.Put(", \"fileSize\": " + std::to_string(layout.fileSize) + ", \"chunks\": [");
    put(true, 0, 0x34364652 /* RF64 */, 0, layout.riffSize32, layout.riffSize, layout.formType, -1);
    for (const Rf64Chunk& chunk : layout.chunks)
        put(false, 1, chunk.id, chunk.position, chunk.size32, chunk.size, 0, riffEnd);
    if (json)
        sink.Put("\n  ]}");
    return allFit;
}

} // namespace

bool ListChunks(const WideString& path, bool json, TextSink& sink)
{
    if (json) {
        std::string head = "{\"path\": ";
        AppendJsonString(head, path.View());
        sink.Put(head);
    }
    // Both walks keep only what the registry needs, so that a file of
    // millions of chunks lists in little memory. The first finds what the
    // listing leaves out; the second, through the same open, lists.
    DroppedRiffFinder finder;
    FileLayout layout(path, {TreeForm::SlotsOnly, Rf64Reading::AfterWalk}, &finder);
    if (!layout.IsExistingFile()) {
        PutProblem(json, sink, "no such file");
        return false;
    }
    if (layout.GetContainer() == FileContainer::Rf64)
        return ListRf64(layout, json, sink);
    if (layout.GetContainer() != FileContainer::Riff) {
        PutProblem(json, sink, "not a RIFF file");
        return false;
    }
    const std::int64_t fileSize = layout.GetFileSize();
    if (json)
        sink.Put(", \"fileSize\": " + std::to_string(fileSize) + ", \"chunks\": [");
    WaveDocument& document = layout.GetDocument();
    Lister lister(json, sink, fileSize, document, std::move(finder.positions), path);
    document.SetObserver(&lister);
    document.Walk();
    lister.Finish();
    if (json)
        sink.Put(lister.WroteAny() ? "\n  ]}" : "]}");
    return lister.AllFit();
}
