#include "support/ReportGrammar.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace {

// The lines of a report in the order of the steps that write them.
enum Step {
    kNoFile,
    kNotRiff,
    kRiffError,
    kNoFormat,
    kNotPcm,
    kBadRate,
    kBadBits,
    kBadChannels,
    kNoData,
    kBadDataSize,
    kBadFrameCount,
    kAllClear,
    kStepCount
};

struct LineForm {
    std::u16string_view text;
    bool hasValue;
    bool hexValue;
};

const LineForm kForms[kStepCount] = {
    {u"ファイルがありません。", false, false},
    {u"RIFF形式ではありません。", false, false},
    {u"RIFF構造にエラーがあります。", false, false},
    {u"フォーマット構造がありません。", false, false},
    {u"PCMではありません。", true, true},
    {u"サンプリング周波数が0～19200Hzではありません。", true, false},
    {u"ビット数が8/16/24Bitではありません。", true, false},
    {u"チャンネル数が1/2チャンネルではありません。", true, false},
    {u"データ構造がありません。", false, false},
    {u"データ情報のサイズが正しくありません。", true, false},
    {u"サンプル数が正しくありません。", true, false},
    {u"チェック完了しました。", false, false},
};

bool IsValue(std::u16string_view value, bool hex)
{
    if (hex) {
        if (value.size() < 4)
            return false;
        for (char16_t c : value) {
            if (!((c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F')))
                return false;
        }
        return true;
    }
    if (!value.empty() && value[0] == u'-')
        value.remove_prefix(1);
    if (value.empty() || (value.size() > 1 && value[0] == u'0'))
        return false;
    for (char16_t c : value) {
        if (c < u'0' || c > u'9')
            return false;
    }
    return true;
}

int StepOf(std::u16string_view line)
{
    for (int step = 0; step < kStepCount; ++step) {
        const LineForm& form = kForms[step];
        if (!form.hasValue) {
            if (line == form.text)
                return step;
            continue;
        }
        if (!line.starts_with(form.text))
            continue;
        std::u16string_view rest = line.substr(form.text.size());
        if (rest.size() >= 3 && rest.starts_with(u" [") && rest.ends_with(u"]") &&
            IsValue(rest.substr(2, rest.size() - 3), form.hexValue))
            return step;
    }
    return -1;
}

} // namespace

bool IsWellFormedReport(const WideString& report, bool hasError, std::string& why)
{
    std::u16string_view text = report.View();
    if (text.empty() || !text.ends_with(u"\r\n")) {
        why = "the report is empty or its last line has no CR LF";
        return false;
    }
    std::vector<int> steps;
    while (!text.empty()) {
        std::size_t end = text.find(u"\r\n");
        int step = StepOf(text.substr(0, end));
        if (step < 0) {
            why = "line " + std::to_string(steps.size()) + " is no line of the check";
            return false;
        }
        steps.push_back(step);
        text.remove_prefix(end + 2);
    }
    for (std::size_t i = 1; i < steps.size(); ++i) {
        if (steps[i] <= steps[i - 1]) {
            why = "the lines are not in the order of the steps";
            return false;
        }
    }
    auto has = [&](int step) {
        for (int s : steps) {
            if (s == step)
                return true;
        }
        return false;
    };
    const bool alone = has(kNoFile) || has(kNotRiff) || has(kAllClear);
    if (alone && steps.size() != 1) {
        why = "a line that stands alone has company";
        return false;
    }
    if (has(kNoFormat) && (has(kNotPcm) || has(kBadRate) || has(kBadBits) || has(kBadChannels))) {
        why = "format findings without a format";
        return false;
    }
    if (has(kNoData) && (has(kBadDataSize) || has(kBadFrameCount))) {
        why = "data findings without data";
        return false;
    }
    if (hasError == has(kAllClear)) {
        why = "the result flag disagrees with the report";
        return false;
    }
    return true;
}
