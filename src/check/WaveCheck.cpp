#include "check/WaveCheck.h"

#include "check/FileFacts.h"
#include "wave/DataChunk.h"
#include "wave/FormatChunk.h"
#include "wave/WaveDocument.h"

#include <cinttypes>
#include <cstdio>

namespace {

constexpr char16_t kNoFile[] = u"ファイルがありません。\r\n";
constexpr char16_t kNotRiff[] = u"RIFF形式ではありません。\r\n";
constexpr char16_t kRiffError[] = u"RIFF構造にエラーがあります。\r\n";
constexpr char16_t kNoFormat[] = u"フォーマット構造がありません。\r\n";
constexpr char16_t kNoData[] = u"データ構造がありません。\r\n";
constexpr char16_t kAllClear[] = u"チェック完了しました。\r\n";

constexpr char16_t kNotPcm[] = u"PCMではありません。";
constexpr char16_t kBadRate[] = u"サンプリング周波数が0～19200Hzではありません。";
constexpr char16_t kBadBits[] = u"ビット数が8/16/24Bitではありません。";
constexpr char16_t kBadChannels[] = u"チャンネル数が1/2チャンネルではありません。";
constexpr char16_t kBadDataSize[] = u"データ情報のサイズが正しくありません。";
constexpr char16_t kBadFrameCount[] = u"サンプル数が正しくありません。";

constexpr std::uint32_t kHighestRate = 192000;

// A finding is the message and then the value in brackets, which brings the
// line end.
template <typename... Values>
void AppendFinding(CheckReport& report, const char16_t* message, const char* suffixFormat, Values... values)
{
    char suffix[64];
    std::snprintf(suffix, sizeof suffix, suffixFormat, values...);
    report += message;
    report += WideString::FromAscii(suffix);
}

void CheckFormat(const FormatChunk& formatChunk, CheckReport& report)
{
    const WaveFormat format = formatChunk.GetFormat();
    if (!formatChunk.IsPcm())
        AppendFinding(report, kNotPcm, " [%04X]\r\n", static_cast<unsigned>(format.formatTag));
    if (format.samplesPerSec == 0 || format.samplesPerSec > kHighestRate)
        AppendFinding(report, kBadRate, " [%d]\r\n", static_cast<int>(static_cast<std::int32_t>(format.samplesPerSec)));
    if (format.bitsPerSample != 8 && format.bitsPerSample != 16 && format.bitsPerSample != 24)
        AppendFinding(report, kBadBits, " [%d]\r\n", static_cast<int>(format.bitsPerSample));
    if (format.channels != 1 && format.channels != 2)
        AppendFinding(report, kBadChannels, " [%d]\r\n", static_cast<int>(format.channels));
}

void CheckData(const DataChunk& dataChunk, CheckReport& report)
{
    if (dataChunk.GetSize() <= 0)
        AppendFinding(report, kBadDataSize, " [%" PRId64 "]\r\n", dataChunk.GetSize());
    if (dataChunk.GetFrameCount() <= 0)
        AppendFinding(report, kBadFrameCount, " [%" PRId64 "]\r\n", dataChunk.GetFrameCount());
}

} // namespace

// Every way in which a run stops early leaves reportHasError true: it turns
// false only in the all-clear step. An exception (memory, a fault) passes
// through with the lines written so far, and the document goes on the way.
void RunWaveCheck(const WideString& wavePath, CheckReport& report, bool& reportHasError)
{
    report.Clear();
    reportHasError = true;
    const WideString path = wavePath;

    if (!IsExistingFile(path)) {
        report += kNoFile;
        return;
    }

    // The check reads the registry alone, so the walk keeps nothing else:
    // a file of millions of chunks is checked in little memory.
    WaveDocument document;
    document.SetTreeForm(TreeForm::SlotsOnly);
    if (!document.Open(path)) {
        if (document.GetContainerKind() != kContainerRiff) {
            report += kNotRiff;
            return;
        }
        report += kRiffError;
    }

    if (const FormatChunk* formatChunk = document.GetFormatChunk())
        CheckFormat(*formatChunk, report);
    else
        report += kNoFormat;

    if (const DataChunk* dataChunk = document.GetDataChunk())
        CheckData(*dataChunk, report);
    else
        report += kNoData;

    if (report.IsEmpty()) {
        report = WideString(kAllClear);
        reportHasError = false;
    }
}
