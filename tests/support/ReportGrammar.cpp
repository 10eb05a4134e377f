#include "support/ReportGrammar.h"

#include "base/Utf8.h"

#include <iterator>
#include <regex>
#include <vector>

namespace {

// The lines of a report in the order of the steps that write them; the
// value of a finding is upper-case hex of at least four digits for the
// format tag, a decimal without leading zeros for the others.
const char* const kSteps[] = {
    "ファイルがありません。",
    "RIFF形式ではありません。",
    "RIFF構造にエラーがあります。",
    "フォーマット構造がありません。",
    "PCMではありません。 \\[[0-9A-F]{4,}\\]",
    "サンプリング周波数が0～19200Hzではありません。 \\[-?(0|[1-9][0-9]*)\\]",
    "ビット数が8/16/24Bitではありません。 \\[-?(0|[1-9][0-9]*)\\]",
    "チャンネル数が1/2チャンネルではありません。 \\[-?(0|[1-9][0-9]*)\\]",
    "データ構造がありません。",
    "データ情報のサイズが正しくありません。 \\[-?(0|[1-9][0-9]*)\\]",
    "サンプル数が正しくありません。 \\[-?(0|[1-9][0-9]*)\\]",
    "チェック完了しました。",
};
const std::vector<std::regex>& StepForms()
{
    static const std::vector<std::regex> forms(std::begin(kSteps), std::end(kSteps));
    return forms;
}

enum : unsigned { kNoFile = 1, kNotRiff = 2, kNoFormat = 8, kFormatFindings = 0xF0, kNoData = 0x100,
                  kDataFindings = 0x600, kAllClear = 0x800 };

} // namespace

bool IsWellFormedReport(const WideString& report, bool hasError, std::string& why)
{
    std::string text = WideToUtf8(report.View());
    if (text.size() < 2 || text.substr(text.size() - 2) != "\r\n") {
        why = "the report is empty or its last line has no CR LF";
        return false;
    }
    unsigned seen = 0;
    int lastStep = -1;
    for (std::size_t start = 0, end; start < text.size(); start = end + 2) {
        end = text.find("\r\n", start);
        const std::string line = text.substr(start, end - start);
        int step = 0;
        while (step < 12 && !std::regex_match(line, StepForms()[step]))
            ++step;
        if (step == 12 || step <= lastStep) {
            why = "\"" + line + "\" is no line of the check, or out of the order of its steps";
            return false;
        }
        lastStep = step;
        seen |= 1u << step;
    }
    const bool alone = (seen & (kNoFile | kNotRiff | kAllClear)) != 0;
    if (alone && (seen & (seen - 1)) != 0) {
        why = "a line that stands alone has company";
        return false;
    }
    if (((seen & kNoFormat) && (seen & kFormatFindings)) || ((seen & kNoData) && (seen & kDataFindings))) {
        why = "findings about a format or data that is not there";
        return false;
    }
    if (hasError == ((seen & kAllClear) != 0)) {
        why = "the result flag disagrees with the report";
        return false;
    }
    return true;
}
