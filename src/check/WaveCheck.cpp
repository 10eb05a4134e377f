#include "check/WaveCheck.h"

#include "check/Finding.h"
#include "wave/DataChunk.h"
#include "wave/FileFacts.h"
#include "wave/FormatChunk.h"
#include "wave/WaveDocument.h"

#include <cinttypes>
#include <cstdio>

namespace {

// The lines of the report come from the table of findings, which names
// each by its code.
constexpr char16_t kAllClear[] = u"チェック完了しました。\r\n";

void AppendLine(CheckReport& report, const char* code)
{
    report += ReportLineText(code);
    report += u"\r\n";
}

constexpr std::uint32_t kHighestRate = 192000;

// A finding is the message and then the value in brackets, which brings the
// line end.
template <typename... Values>
void AppendFinding(CheckReport& report, const char* code, const char* suffixFormat, Values... values)
{
    char suffix[64];
    std::snprintf(suffix, sizeof suffix, suffixFormat, values...);
    report += ReportLineText(code);
    report += WideString::FromAscii(suffix);
}

void CheckFormat(const FormatChunk& formatChunk, CheckReport& report)
{
    const WaveFormat format = formatChunk.GetFormat();
    if (!formatChunk.IsPcm())
        AppendFinding(report, "format.not-pcm", " [%04X]\r\n", static_cast<unsigned>(format.formatTag));
    if (format.samplesPerSec == 0 || format.samplesPerSec > kHighestRate)
        AppendFinding(report, "format.sample-rate", " [%d]\r\n", static_cast<int>(static_cast<std::int32_t>(format.samplesPerSec)));
    if (format.bitsPerSample != 8 && format.bitsPerSample != 16 && format.bitsPerSample != 24)
        AppendFinding(report, "format.bits", " [%d]\r\n", static_cast<int>(format.bitsPerSample));
    if (format.channels != 1 && format.channels != 2)
        AppendFinding(report, "format.channels", " [%d]\r\n", static_cast<int>(format.channels));
}

void CheckData(const DataChunk& dataChunk, CheckReport& report)
{
    if (dataChunk.GetSize() <= 0)
        AppendFinding(report, "data.size", " [%" PRId64 "]\r\n", dataChunk.GetSize());
    if (dataChunk.GetFrameCount() <= 0)
        AppendFinding(report, "data.frames", " [%" PRId64 "]\r\n", dataChunk.GetFrameCount());
}

// Every way in which a run stops early leaves reportHasError true: it turns
// false only in the all-clear step. An exception (memory, a fault) passes
// through with the lines written so far, and the document goes on the way:
// a walk that throws leaves an empty report with its error.
void StartReport(CheckReport& report, bool& reportHasError, JudgedChunks& judged)
{
    judged = JudgedChunks();
    report.Clear();
    reportHasError = true;
}

} // namespace

void RunWaveCheck(const WideString& wavePath, CheckReport& report, bool& reportHasError, JudgedChunks& judged)
{
    StartReport(report, reportHasError, judged);
    const WideString path = wavePath;
    if (!IsExistingFile(path)) {
        RunWaveCheck(nullptr, false, report, reportHasError, judged);
        return;
    }
    // The check reads the registry alone, so the walk keeps nothing else:
    // a file of millions of chunks is checked in little memory.
    WaveDocument document;
    document.SetTreeForm(TreeForm::SlotsOnly);
    const bool walkedWell = document.Open(path);
    RunWaveCheck(&document, walkedWell, report, reportHasError, judged);
}

// The chunks judged are those the document keeps in its slots: the last
// format and data chunk it made, in a list or behind a RIFF chunk that
// ended early too. A chunk whose header the walk never placed (the read
// of a broken structure gave up inside it) has no place to give.
void RunWaveCheck(const WaveDocument* document, bool walkedWell, CheckReport& report, bool& reportHasError,
                  JudgedChunks& judged)
{
    StartReport(report, reportHasError, judged);
    if (!document) {
        AppendLine(report, "file.missing");
        return;
    }
    if (!walkedWell) {
        if (document->GetContainerKind() != kContainerRiff) {
            AppendLine(report, "riff.not-riff");
            return;
        }
        AppendLine(report, "riff.structure");
    }

    if (const FormatChunk* formatChunk = document->GetFormatChunk()) {
        if (formatChunk->GetPosition() >= 0)
            judged.formatOffset = formatChunk->GetPosition();
        CheckFormat(*formatChunk, report);
    } else {
        AppendLine(report, "format.missing");
    }

    if (const DataChunk* dataChunk = document->GetDataChunk()) {
        if (dataChunk->GetPosition() >= 0)
            judged.dataOffset = dataChunk->GetPosition();
        CheckData(*dataChunk, report);
    } else {
        AppendLine(report, "data.missing");
    }

    if (report.IsEmpty()) {
        report = WideString(kAllClear);
        reportHasError = false;
    }
}

void RunWaveCheck(const WideString& wavePath, CheckReport& report, bool& reportHasError)
{
    JudgedChunks judged;
    RunWaveCheck(wavePath, report, reportHasError, judged);
}
