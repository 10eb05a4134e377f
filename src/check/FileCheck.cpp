#include "check/FileCheck.h"

#include "check/FileWarnings.h"
#include "check/WaveCheck.h"
#include "wave/FileFacts.h"

#include <cstdlib>

namespace {

// The code of a report line, found by the text it begins with.
const FindingKind* KindOfLine(std::u16string_view line)
{
    std::size_t count = 0;
    const FindingKind* kinds = FindingKinds(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::u16string_view text(kinds[i].text);
        if (kinds[i].severity == Severity::Error && line.substr(0, text.size()) == text)
            return &kinds[i];
    }
    return nullptr;
}

// The number in the brackets behind a line's text: hexadecimal for a
// format tag, as the report writes it, decimal otherwise.
std::optional<std::int64_t> ValueOfLine(std::u16string_view line, bool hexadecimal)
{
    const std::size_t open = line.rfind(u'[');
    const std::size_t close = line.rfind(u']');
    if (open == std::u16string_view::npos || close == std::u16string_view::npos || close < open + 2)
        return std::nullopt;
    std::string digits;
    for (char16_t unit : line.substr(open + 1, close - open - 1))
        digits += static_cast<char>(unit < 0x80 ? unit : '?');
    char* end = nullptr;
    const long long value = std::strtoll(digits.c_str(), &end, hexadecimal ? 16 : 10);
    if (end == digits.c_str() || *end != '\0')
        return std::nullopt;
    return value;
}

} // namespace

bool FileCheck::HasWarnings() const
{
    for (const Finding& finding : findings) {
        if (finding.kind->severity == Severity::Warning)
            return true;
    }
    return false;
}

void CheckFile(const WideString& path, FileCheck& result)
{
    result.path = path;
    result.findings.clear();
    result.unreadable = false;
    RunWaveCheck(path, result.report, result.hasError);

    FileLayout layout;
    std::vector<Finding> warnings;
    if (IsExistingFile(path) && !FindWarnings(path, layout, warnings)) {
        result.unreadable = true;
        return;
    }

    const std::u16string_view report = result.report.View();
    for (std::size_t start = 0; start < report.size();) {
        std::size_t end = report.find(u"\r\n", start);
        if (end == std::u16string_view::npos)
            end = report.size();
        const std::u16string_view line = report.substr(start, end - start);
        start = end + 2;
        const FindingKind* kind = KindOfLine(line);
        if (!kind)
            continue; // the all-clear line
        const std::string code = kind->code;
        std::optional<std::int64_t> offset;
        std::string chunk;
        if (code.rfind("format.", 0) == 0 && code != "format.missing" && layout.formatOffset) {
            offset = layout.formatOffset;
            chunk = "fmt ";
        } else if ((code == "data.size" || code == "data.frames") && layout.dataOffset) {
            offset = layout.dataOffset;
            chunk = "data";
        }
        Finding finding;
        finding.kind = kind;
        finding.offset = offset;
        finding.chunk = chunk;
        finding.value = ValueOfLine(line, code == "format.not-pcm");
        // The Japanese line is the report's own, value and all.
        finding.text = WideString(line);
        finding.message = kind->message;
        if (finding.value)
            finding.message += " [" + std::to_string(*finding.value) + "]";
        result.findings.push_back(std::move(finding));
    }
    for (Finding& warning : warnings)
        result.findings.push_back(std::move(warning));
}
