// The wave reader and the check on arbitrary bytes, read from a file as the
// product reads them. The report must be made only of the check's own
// lines, and the walk that keeps only the registry must give what the whole
// tree gives. That the check gives the same report twice is left to the
// corpus test: a second check cost a quarter of every run, and each walk
// here opens the file once a data chunk.
#include "check/WaveCheck.h"
#include "support/ReportGrammar.h"
#include "wave/DataChunk.h"
#include "wave/FormatChunk.h"
#include "wave/WaveDocument.h"

#include "FuzzInput.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string input = ScratchPath(".wav");
    WriteScratch(input, data, size);

    const WideString path = WideString::FromAscii(input);
    CheckReport report;
    bool hasError = false;
    RunWaveCheck(path, report, hasError);
    std::string why;
    if (!IsWellFormedReport(report, hasError, why))
        FailInvariant(why.c_str());

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
