// The wave reader, the check with its findings and warnings, and the RF64
// layout on arbitrary bytes, read from a file as the product reads them.
// The report must be made only of the check's own lines, every finding
// must point into the file, the walk that keeps only the registry must
// give what the whole tree gives, and the RF64 layout's chunks must follow
// one another from the ds64 chunk on, each beginning inside the file and
// listed with a mark where it runs past its end; the metadata view (whose
// chunks' parsers the check's warnings meet too) must read every RIFF WAVE
// file and no other, in text or JSON by the input's length; the same bytes
// held in memory must give the same check and facts. That the check gives the
// same report twice is left to the corpus test: a second check cost a
// quarter of every run, and each walk here opens the file once a data
// chunk.
#include "check/FileCheck.h"
#include "cli/CheckPrinter.h"
#include "cli/ChunkList.h"
#include "cli/InfoPrinter.h"
#include "measure/FormatFacts.h"
#include "measure/Levels.h"
#include "support/ReportGrammar.h"
#include "wave/DataChunk.h"
#include "wave/FormatChunk.h"
#include "wave/Rf64File.h"
#include "wave/WaveDocument.h"

#include "FuzzInput.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace {

// Counts the chunk list's lines and those that mark an end of the file.
class LineCounter : public TextSink {
public:
    void Put(std::string_view text) override
    {
        rf64 = rf64 || (lines == 0 && text.substr(0, 10) == "RF64 at 0,");
        ++lines;
        pastFile += text.find("runs past the end of the file") != std::string_view::npos;
    }
    std::size_t lines = 0;
    std::size_t pastFile = 0;
    bool rf64 = false; // listed as RF64, not as the RIFF chunks the reader found in it
};

class DiscardingSink : public TextSink {
public:
    void Put(std::string_view) override {}
};

void CheckRf64Layout(const WideString& path, std::int64_t size)
{
    Rf64Layout layout;
    std::string problem;
    if (!ReadRf64Layout(path, layout, problem)) {
        if (problem.empty())
            FailInvariant("the RF64 layout is refused without a reason");
        return;
    }
    if (layout.fileSize != size || layout.riffSize < 0 || layout.chunks.size() > kMostRf64Chunks ||
        layout.formatBytes > sizeof layout.format)
        FailInvariant("the RF64 layout's sizes are out of range");
    std::int64_t next = 12;
    std::size_t pastFile = layout.riffSize + 8 > size;
    bool dataFound = layout.dataPosition < 0;
    for (const Rf64Chunk& chunk : layout.chunks) {
        if (chunk.position != next || chunk.size < 0 || chunk.position + 8 > size)
            FailInvariant("an RF64 chunk doesn't follow the one before it inside the file");
        next = chunk.position + 8 + chunk.size + chunk.size % 2;
        if (next <= chunk.position)
            FailInvariant("an RF64 chunk leaves the walk where it stands");
        pastFile += chunk.position + 8 + chunk.size > size;
        dataFound = dataFound || (chunk.position == layout.dataPosition && chunk.size == layout.dataSize);
    }
    if (!dataFound)
        FailInvariant("the RF64 data chunk is none of the layout's chunks");
    LineCounter listing;
    ListChunks(path, false, listing);
    if (listing.rf64 && (listing.lines != layout.chunks.size() + 1 || listing.pastFile != pastFile))
        FailInvariant("the chunk list of an RF64 file is not its layout, each end past the file marked");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string input = ScratchPath(".wav");
    WriteScratch(input, data, size);

    const WideString path = WideString::FromAscii(input);
    // The layout the checker reads: its RF64 layout too, for the facts.
    FileLayout layout(path, kLevelsReading);
    FileCheck check;
    CheckFile(layout, check);
    const FormatFacts facts = ReadFormatFacts(layout);
    if (facts.frames && (*facts.frames < 0 || *facts.frames * *facts.blockAlign > static_cast<std::int64_t>(size)))
        FailInvariant("the header facts count frames the file doesn't hold");
    if (facts.seconds && !(*facts.seconds >= 0))
        FailInvariant("the header facts give a duration below 0");
    std::string why;
    if (!IsWellFormedReport(check.report, check.hasError, why))
        FailInvariant(why.c_str());
    for (const Finding& finding : check.findings) {
        if (!finding.kind || (finding.offset && (*finding.offset < 0 || *finding.offset >= static_cast<std::int64_t>(size))))
            FailInvariant("a finding points outside the file");
    }

    // The same bytes held in memory, under a name that no file has.
    FileLayout held(MemoryBytes{data, size}, WideString(u"held"), kLevelsReading);
    FileCheck heldCheck;
    CheckFile(held, heldCheck);
    std::string fileFindings, heldFindings;
    for (const Finding& finding : check.findings)
        AppendFindingJson(fileFindings, finding);
    for (const Finding& finding : heldCheck.findings)
        AppendFindingJson(heldFindings, finding);
    if (!(heldCheck.report == check.report) || heldFindings != fileFindings ||
        FormatFactsJson(ReadFormatFacts(held)) != FormatFactsJson(facts))
        FailInvariant("the bytes in memory give another check than their file");

    DiscardingSink discard;
    // An RF64 file is shown when its ds64 sizes can be told.
    const bool wave = size >= 12 && std::memcmp(data + 8, "WAVE", 4) == 0;
    const bool riffWave = wave && std::memcmp(data, "RIFF", 4) == 0;
    const bool rf64Wave = wave && std::memcmp(data, "RF64", 4) == 0;
    const bool shown = PrintInfo(path, size % 2 == 0, discard);
    if ((riffWave && !shown) || (!riffWave && !rf64Wave && shown))
        FailInvariant("--info refuses a RIFF WAVE file, or reads what is no WAVE file");

    // Only a file that begins as RF64 is read as one, so others cost no open.
    if (size >= 4 && std::memcmp(data, "RF64", 4) == 0)
        CheckRf64Layout(path, static_cast<std::int64_t>(size));

    std::string seen[2];
    for (int form = 0; form < 2; ++form) {
        WaveDocument document;
        document.SetTreeForm(form == 0 ? TreeForm::Whole : TreeForm::SlotsOnly);
        seen[form] = std::to_string(document.Open(path)) + " " + std::to_string(document.GetContainerKind());
        if (const FormatChunk* format = document.GetFormatChunk()) {
            const WaveFormat f = format->GetFormat();
            seen[form] += " fmt " + std::to_string(f.formatTag) + " " + std::to_string(f.channels) + " " +
                          std::to_string(f.samplesPerSec) + " " + std::to_string(f.bitsPerSample) + " " +
                          std::to_string(f.blockAlign);
        }
        if (const DataChunk* data = document.GetDataChunk())
            seen[form] += " data " + std::to_string(data->GetSize()) + " " + std::to_string(data->GetFrameCount());
    }
    if (seen[0] != seen[1])
        FailInvariant("the walk for the registry gives other slots than the whole tree");
    return 0;
}
