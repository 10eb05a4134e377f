#include "check/ChunkList.h"

#include "base/Utf8.h"
#include "check/TextFormat.h"
#include "check/FileFacts.h"
#include "wave/InfoChunk.h"
#include "wave/ListChunk.h"
#include "wave/RootChunk.h"
#include "wave/WaveDocument.h"

#include <cstdio>
#include <string>

namespace {

// A chunk's id as text: printable ASCII as it is, every other byte as \xNN.
std::string IdText(std::uint32_t id)
{
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto byte = static_cast<unsigned char>(id >> shift);
        if (byte >= 0x20 && byte < 0x7F) {
            text += static_cast<char>(byte);
        } else {
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\x%02X", byte);
            text += escape;
        }
    }
    return text;
}

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

class Lister {
public:
    Lister(bool json, TextSink& sink, std::int64_t fileSize) : json(json), sink(sink), fileSize(fileSize) {}

    // A chunk and what it holds. The end of a chunk that reads its own size
    // lies 8 bytes behind its id; a list's child, which has its size from
    // the list, starts 4 bytes before its body.
    void Visit(const Chunk& chunk, int depth, std::int64_t parentEnd)
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
            line += std::string(", \"pastFileEnd\": ") + (pastFile ? "true" : "false") +
                    ", \"pastParentEnd\": " + (pastParent ? "true" : "false") + "}";
        } else {
            line = std::string(static_cast<std::size_t>(depth) * 2, ' ') + IdText(chunk.GetId()) + " at " +
                   FormatCount(chunk.GetPosition()) + ", " +
                   (sized ? FormatCount(chunk.GetSize()) + " bytes" : std::string("size field cut short"));
            if (form)
                line += ", form " + IdText(form);
            if (listChild)
                line += ", list " + IdText(listChild->GetId());
            if (info) {
                WideString key, value;
                for (std::int32_t i = 0; info->GetEntries().GetEntry(i, key, value); ++i)
                    line += (i ? ", " : ": ") + WideToUtf8(key.View()) + " \"" + WideToUtf8(Trimmed(value)) + "\"";
            }
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
        for (const auto& child : holder.GetChildren())
            Visit(*child, depth + 1, end);
    }

    bool AllFit() const { return allFit; }

private:
    bool json;
    TextSink& sink;
    std::int64_t fileSize;
    bool first = true;
    bool allFit = true;
};

void PutProblem(bool json, TextSink& sink, const char* problem)
{
    if (json) {
        std::string text = ", \"error\": ";
        AppendJsonString(text, Utf8ToWide(problem));
        sink.Put(text + "}");
    } else {
        sink.Put(std::string("(") + problem + ")\n");
    }
}

} // namespace

bool ListChunks(const WideString& path, bool json, TextSink& sink)
{
    if (json) {
        std::string head = "{\"path\": ";
        AppendJsonString(head, path.View());
        sink.Put(head);
    }
    if (!IsExistingFile(path)) {
        PutProblem(json, sink, "no such file");
        return false;
    }
    WaveDocument document;
    document.Open(path);
    const std::int64_t fileSize = GetDocumentFileSize(document);
    if (document.GetContainerKind() != kContainerRiff) {
        PutProblem(json, sink, "not a RIFF file");
        return false;
    }
    if (json)
        sink.Put(", \"fileSize\": " + std::to_string(fileSize) + ", \"chunks\": [");
    Lister lister(json, sink, fileSize);
    for (const auto& chunk : document.GetChunks())
        lister.Visit(*chunk, 0, -1);
    if (json)
        sink.Put(document.GetChunks().IsEmpty() ? "]}" : "\n  ]}");
    return lister.AllFit();
}
