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

#include <cstdio>

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

class Mender {
public:
    Mender(std::int64_t fileSize, std::vector<std::string>& changes, std::string& problem)
        : fileSize(fileSize), changes(changes), problem(problem)
    {
    }

    // The chunks of a RIFF chunk must follow one another without a gap,
    // each on the even position behind the one before, up to expectedEnd;
    // bodies that run past the end of the file are cut to what is there.
    bool MendChildren(const Chunk& parent, std::int64_t expectedEnd)
    {
        next = parent.GetPosition() + kRootHeaderBytes;
        for (const auto& child : parent.GetChildren()) {
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
            else if (dynamic_cast<const FormatChunk*>(child.get()))
                kind = Kind::Format;
            else if (dynamic_cast<const DataChunk*>(child.get()))
                kind = Kind::Data;
            std::int64_t size = child->GetSize();
            if (!MendChild(child->GetId(), child->GetPosition(), size, kind))
                return false;
            child->SetSize(size);
        }
        return CheckGap(next, std::min(expectedEnd, fileSize));
    }

private:
    enum class Kind { Riff, Format, Data, WrittenAsRead };

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
        if (kind == Kind::Format && size > 18)
            return Refuse(at() + " holds " + FormatCount(size) + " bytes; the copy would keep only the first 18");
        const std::int64_t present = fileSize - (position + 8);
        const bool dataToEnd = kind == Kind::Data && size == 0 && present > 0;
        if (size > present || dataToEnd) {
            changes.push_back(Name(id) + ": " + FormatCount(size) + " bytes declared, " + FormatCount(present) +
                              " present");
            size = present;
        }
        if (id == kIdFormat && size < 18)
            changes.push_back("fmt: " + FormatCount(size) + " -> 18 bytes");
        next = position + 8 + size;
        next += next % 2;
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

    std::int64_t fileSize;
    std::vector<std::string>& changes;
    std::string& problem;
    std::int64_t next = 0;
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
    Mender mender(fileSize, changes, problem);
    if (!mender.MendChildren(*root, fileSize))
        return false;
    if (document.GetDataChunk()) {
        const FormatChunk* format = document.GetFormatChunk();
        if (!format || format->GetFormat().channels < 1 || format->GetFormat().blockAlign < 1) {
            problem = "the data can't be written without a format of at least one channel and one byte per frame";
            return false;
        }
    }

    FileStream target;
    WideString temporary;
    if (!CreateTemporary(output, target, temporary)) {
        problem = "can't make a file beside " + WideToUtf8(output.View());
        return false;
    }
    const bool written = root->Write(target);
    const std::int64_t newRiffSize = target.GetSize() - 8 - target.GetSize() % 2;
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
    if (newRiffSize != root->GetSize())
        changes.insert(changes.begin(), "RIFF size " + FormatCount(root->GetSize()) + " -> " + FormatCount(newRiffSize));
    return true;
}
