#include "support/ReportGrammar.h"

#include "base/Utf8.h"

#include <iterator>
#include <string_view>

namespace {

// The lines of a report in the order of the steps that write them; the
// value of a finding is upper-case hex of at least four digits for the
// format tag, a decimal without leading zeros for the others. Matched by
// hand: the fuzzer runs this on every input.
enum class Value { None, Hex, Decimal };
struct Step {
    std::string_view text;
    Value value;
};
constexpr Step kSteps[] = {
    {"ファイルがありません。", Value::None},
    {"RIFF形式ではありません。", Value::None},
    {"RIFF構造にエラーがあります。", Value::None},
    {"フォーマット構造がありません。", Value::None},
    {"PCMではありません。", Value::Hex},
    {"サンプリング周波数が0～19200Hzではありません。", Value::Decimal},
    {"ビット数が8/16/24Bitではありません。", Value::Decimal},
    {"チャンネル数が1/2チャンネルではありません。", Value::Decimal},
    {"データ構造がありません。", Value::None},
    {"データ情報のサイズが正しくありません。", Value::Decimal},
    {"サンプル数が正しくありません。", Value::Decimal},
    {"チェック完了しました。", Value::None},
};
constexpr int kStepCount = static_cast<int>(std::size(kSteps));

bool IsValue(std::string_view digits, Value value)
{
    if (value == Value::Hex) {
        if (digits.size() < 4)
            return false;
        for (char c : digits)
            if (!(c >= '0' && c <= '9') && !(c >= 'A' && c <= 'F'))
                return false;
        return true;
    }
    if (!digits.empty() && digits.front() == '-')
        digits.remove_prefix(1);
    if (digits.empty() || (digits.front() == '0' && digits.size() > 1))
        return false;
    for (char c : digits)
        if (c < '0' || c > '9')
            return false;
    return true;
}

bool IsStepLine(std::string_view line, const Step& step)
{
    if (line.substr(0, step.text.size()) != step.text)
        return false;
    line.remove_prefix(step.text.size());
    if (step.value == Value::None)
        return line.empty();
    if (line.size() < 3 || line.substr(0, 2) != " [" || line.back() != ']')
        return false;
    return IsValue(line.substr(2, line.size() - 3), step.value);
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
        while (step < kStepCount && !IsStepLine(line, kSteps[step]))
            ++step;
        if (step == kStepCount || step <= lastStep) {
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
