#include "check/FileCheck.h"

#include "check/FileWarnings.h"
#include "check/MetadataWarnings.h"
#include "check/WaveCheck.h"

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

// The figure in the brackets behind a line's text, as the line writes it:
// four hexadecimal digits for a format tag, decimal otherwise. Empty for a
// line without one.
std::string FigureOfLine(std::u16string_view line)
{
    const std::size_t open = line.rfind(u'[');
    const std::size_t close = line.rfind(u']');
    if (open == std::u16string_view::npos || close == std::u16string_view::npos || close < open + 2)
        return {};
    std::string digits;
    for (char16_t unit : line.substr(open + 1, close - open - 1))
        digits += static_cast<char>(unit < 0x80 ? unit : '?');
    return digits;
}

std::optional<std::int64_t> ValueOfFigure(const std::string& digits, bool hexadecimal)
{
    char* end = nullptr;
    const long long value = std::strtoll(digits.c_str(), &end, hexadecimal ? 16 : 10);
    if (digits.empty() || *end != '\0')
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

void CheckFile(FileLayout& layout, FileCheck& result)
{
    result.path = layout.GetPath();
    result.findings.clear();
    result.unreadable = false;
    JudgedChunks judged;
    const bool existing = layout.IsExistingFile();
    RunWaveCheck(existing ? &layout.GetDocument() : nullptr, layout.IsWalkedWell(), result.report, result.hasError,
                 judged);

    std::vector<Finding> warnings;
    if (existing) {
        if (!layout.IsOpen()) {
            result.unreadable = true;
            return;
        }
        StreamGuard guard;
        FileStream& stream = layout.AcquireStream(guard);
        FindWarnings(stream, layout.GetFileSize(), warnings);
        FindMetadataWarnings(stream, layout.GetFileSize(), warnings);
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
        if (code.rfind("format.", 0) == 0 && code != "format.missing" && judged.formatOffset) {
            offset = judged.formatOffset;
            chunk = "fmt ";
        } else if ((code == "data.size" || code == "data.frames") && judged.dataOffset) {
            offset = judged.dataOffset;
            chunk = "data";
        }
        Finding finding;
        finding.kind = kind;
        finding.offset = offset;
        finding.chunk = chunk;
        const std::string figure = FigureOfLine(line);
        finding.value = ValueOfFigure(figure, code == "format.not-pcm");
        // The Japanese line is the report's own, value and all; the English
        // one gives the figure as the line writes it.
        finding.text = WideString(line);
        finding.message = kind->message;
        if (finding.value)
            finding.message += " [" + figure + "]";
        result.findings.push_back(std::move(finding));
    }
    for (Finding& warning : warnings)
        result.findings.push_back(std::move(warning));
}
