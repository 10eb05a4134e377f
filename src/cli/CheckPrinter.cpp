#include "cli/CheckPrinter.h"

#include "base/TextFormat.h"
#include "base/Utf8.h"
#include "cli/PolicyFormat.h"

namespace {

constexpr char16_t kAllClear[] = u"チェック完了しました。";
// Warnings follow the report in its own voice, marked as such.
constexpr char kWarningMark[] = "注意：";
// The members of a JSON object in the place of a report that there is none of.
constexpr char kNoReport[] = "\"report\": null, \"hasError\": true, ";
// ... and in the place of the header facts of a path that was never read.
constexpr char kNoFormat[] = ", \"format\": null";

void AppendNumber(std::string& out, const char* name, const std::optional<std::int64_t>& number)
{
    if (number)
        out += std::string(", \"") + name + "\": " + std::to_string(*number);
}

std::string FindingsJson(const std::vector<Finding>& findings)
{
    std::string out = "\"findings\": [";
    for (std::size_t i = 0; i < findings.size(); ++i) {
        out += i ? ", " : "";
        AppendFindingJson(out, findings[i]);
    }
    return out + "]";
}

// The members of a checked file's object, in both JSON forms: path,
// report, hasError and findings as the checker always printed them, then
// the header facts and a policy's verdict.
std::string FileMembersJson(const FileCheck& check, const FormatFacts& facts, const PolicyVerdict* verdict)
{
    std::string members = "\"path\": ";
    AppendJsonString(members, check.path.View());
    members += ", \"report\": ";
    AppendJsonString(members, check.report.View());
    members += std::string(", \"hasError\": ") + (check.hasError ? "true" : "false");
    members += ", " + FindingsJson(check.findings) + ", \"format\": " + FormatFactsJson(facts);
    return verdict ? members + ", " + FormatPolicyJson(*verdict) : members;
}

Finding UnreadableFinding(const std::string& code)
{
    const FindingKind* kind = FindFindingKind(code);
    Finding finding;
    finding.kind = kind;
    finding.message = kind->message;
    finding.text = WideString(kind->text);
    return finding;
}

class TextPrinter : public CheckPrinter {
public:
    TextPrinter(TextSink& sink, bool headed) : sink(sink), headed(headed) {}

    // A person reads a file's facts with --levels.
    void File(const FileCheck& check, const FormatFacts&, const PolicyVerdict* verdict) override
    {
        Head(check.path);
        if (check.unreadable) {
            sink.Put(WideToUtf8(UnreadableFinding("file.unreadable").text.View()) + "\n");
            return;
        }
        std::string text = WideToUtf8(check.report.Replaced(u"\r\n", u"\n").View());
        for (const Finding& finding : check.findings) {
            if (finding.kind->severity == Severity::Warning)
                text += WarningLine(finding);
        }
        sink.Put(verdict ? text + FormatPolicyText(*verdict) : text);
    }
    void Unreadable(const WideString& path, const std::string& code) override
    {
        Head(path);
        sink.Put(WideToUtf8(UnreadableFinding(code).text.View()) + "\n");
    }
    void End(const RunSummary& summary) override
    {
        if (headed)
            sink.Put(FormatSummary(summary));
    }

private:
    void Head(const WideString& path)
    {
        if (headed)
            sink.Put("== " + WideToPathUtf8(path.View()) + "\n");
    }

    TextSink& sink;
    bool headed;
};

// One array; the fields before "findings" are those the checker always
// printed, byte for byte.
class JsonPrinter : public CheckPrinter {
public:
    explicit JsonPrinter(TextSink& sink) : sink(sink) {}

    void Begin() override { sink.Put("["); }
    void File(const FileCheck& check, const FormatFacts& facts, const PolicyVerdict* verdict) override
    {
        if (check.unreadable) {
            Unreadable(check.path, "file.unreadable");
            return;
        }
        sink.Put(Separator() + "{" + FileMembersJson(check, facts, verdict) + "}");
    }
    // Every object has the same members: a path that gives no report has
    // null in its place, and counts as one with an error.
    void Unreadable(const WideString& path, const std::string& code) override
    {
        std::string object = Separator() + "{\"path\": ";
        AppendJsonString(object, path.View());
        object += ", " + std::string(kNoReport) + FindingsJson({UnreadableFinding(code)}) + kNoFormat + "}";
        sink.Put(object);
    }
    void End(const RunSummary&) override { sink.Put(any ? "\n]\n" : "]\n"); }

private:
    std::string Separator()
    {
        const bool first = !any;
        any = true;
        return first ? "\n  " : ",\n  ";
    }

    TextSink& sink;
    bool any = false;
};

// One object a line, each with its type, so that a long run parses line
// by line and a run cut short loses at most its last line.
class JsonLinesPrinter : public CheckPrinter {
public:
    explicit JsonLinesPrinter(TextSink& sink) : sink(sink) {}

    void File(const FileCheck& check, const FormatFacts& facts, const PolicyVerdict* verdict) override
    {
        if (check.unreadable) {
            Unreadable(check.path, "file.unreadable");
            return;
        }
        sink.Put("{\"type\": \"file\", " + FileMembersJson(check, facts, verdict) + "}\n");
    }
    void Unreadable(const WideString& path, const std::string& code) override
    {
        std::string object = "{\"type\": \"unreadable\", \"path\": ";
        AppendJsonString(object, path.View());
        sink.Put(object + ", " + kNoReport + FindingsJson({UnreadableFinding(code)}) + kNoFormat + "}\n");
    }
    void End(const RunSummary& summary) override
    {
        sink.Put("{\"type\": \"summary\", \"files\": " + std::to_string(summary.files) +
                 ", \"sound\": " + std::to_string(summary.sound) +
                 ", \"withFindings\": " + std::to_string(summary.withFindings) +
                 ", \"withWarnings\": " + std::to_string(summary.withWarnings) +
                 ", \"unreadable\": " + std::to_string(summary.unreadable) + "}\n");
    }

private:
    TextSink& sink;
};

// A row a finding, as spreadsheets read CSV: UTF-8 behind a byte order
// mark (without it some take the bytes for the system's code page and
// garble the Japanese), every field quoted, rows ending in CR LF.
class CsvPrinter : public CheckPrinter {
public:
    explicit CsvPrinter(TextSink& sink) : sink(sink) {}

    void Begin() override
    {
        sink.Put("\xEF\xBB\xBF\"path\",\"severity\",\"code\",\"offset\",\"chunk\",\"value\",\"declared\",\"actual\","
                 "\"message\",\"text\",\"container\",\"formatTag\",\"subFormat\",\"sampleRate\",\"channels\",\"bits\","
                 "\"blockAlign\",\"frames\",\"seconds\"\r\n");
    }
    void File(const FileCheck& check, const FormatFacts& facts, const PolicyVerdict* verdict) override
    {
        if (check.unreadable) {
            Unreadable(check.path, "file.unreadable");
            return;
        }
        if (check.findings.empty()) {
            Finding sound;
            sound.message = "The file is sound.";
            sound.text = WideString(kAllClear);
            Row(check.path, "ok", "file.sound", sound, facts);
        }
        for (const Finding& finding : check.findings)
            Row(check.path, SeverityName(finding.kind->severity), finding.kind->code, finding, facts);
        // A row for each rule, its outcome in the severity's column.
        for (const RuleVerdict& rule : verdict ? verdict->rules : std::vector<RuleVerdict>{}) {
            Finding outcome;
            outcome.message = FormatRuleSentence(rule);
            Row(check.path, RuleOutcomeName(rule.outcome), "policy." + rule.rule->name, outcome, facts);
        }
    }
    void Unreadable(const WideString& path, const std::string& code) override
    {
        Row(path, "error", code, UnreadableFinding(code), FormatFacts());
    }
    void End(const RunSummary&) override {}

private:
    template <typename T>
    static std::string Number(const std::optional<T>& number)
    {
        return number ? std::to_string(*number) : "";
    }
    // Every row of a file repeats its header facts, so that a filter on
    // rows keeps them.
    static std::string FactFields(const FormatFacts& facts)
    {
        return CsvField(ContainerName(facts.container)) + "," + Number(facts.formatTag) + "," +
               CsvField(facts.subFormat.value_or("")) + "," + Number(facts.sampleRate) + "," + Number(facts.channels) +
               "," + Number(facts.bits) + "," + Number(facts.blockAlign) + "," + Number(facts.frames) + "," +
               (facts.seconds ? FormatFixed(*facts.seconds, 6) : "");
    }
    void Row(const WideString& path, const std::string& severity, const std::string& code, const Finding& finding,
             const FormatFacts& facts)
    {
        sink.Put(CsvField(WideToPathUtf8(path.View())) + "," + CsvField(severity) + "," + CsvField(code) + "," +
                 Number(finding.offset) + "," + CsvField(finding.chunk) + "," + Number(finding.value) + "," +
                 Number(finding.declared) + "," + Number(finding.actual) + "," + CsvField(finding.message) + "," +
                 CsvField(WideToUtf8(finding.text.View())) + "," + FactFields(facts) + "\r\n");
    }

    TextSink& sink;
};

} // namespace

void RunSummary::Count(const FileCheck& check)
{
    ++files;
    if (check.unreadable)
        ++unreadable;
    else if (check.hasError)
        ++withFindings;
    else if (check.HasWarnings())
        ++withWarnings;
    else
        ++sound;
}

void RunSummary::CountUnreadable()
{
    ++files;
    ++unreadable;
}

std::unique_ptr<CheckPrinter> MakeCheckPrinter(OutputFormat format, TextSink& sink, bool headed)
{
    switch (format) {
    case OutputFormat::Json: return std::make_unique<JsonPrinter>(sink);
    case OutputFormat::JsonLines: return std::make_unique<JsonLinesPrinter>(sink);
    case OutputFormat::Csv: return std::make_unique<CsvPrinter>(sink);
    case OutputFormat::Text: break;
    }
    return std::make_unique<TextPrinter>(sink, headed);
}

std::string WarningLine(const Finding& warning)
{
    return kWarningMark + WideToUtf8(warning.text.View()) + "\n";
}

std::string FormatFactsJson(const FormatFacts& facts)
{
    auto number = [](const auto& value) { return value ? std::to_string(*value) : std::string("null"); };
    std::string json = "{\"container\": ";
    json += facts.container == FileContainer::Neither ? "null" : "\"" + std::string(ContainerName(facts.container)) + "\"";
    json += ", \"formatTag\": " + number(facts.formatTag);
    json += ", \"subFormat\": " + (facts.subFormat ? "\"" + *facts.subFormat + "\"" : std::string("null"));
    json += ", \"sampleRate\": " + number(facts.sampleRate) + ", \"channels\": " + number(facts.channels);
    json += ", \"bits\": " + number(facts.bits) + ", \"blockAlign\": " + number(facts.blockAlign);
    json += ", \"frames\": " + number(facts.frames);
    return json + ", \"seconds\": " + (facts.seconds ? FormatFixed(*facts.seconds, 6) : std::string("null")) + "}";
}

void AppendFindingJson(std::string& out, const Finding& finding)
{
    out += "{\"code\": \"";
    out += finding.kind->code;
    out += "\", \"severity\": \"";
    out += SeverityName(finding.kind->severity);
    out += "\", \"message\": ";
    AppendJsonString(out, Utf8ToWide(finding.message));
    out += ", \"text\": ";
    AppendJsonString(out, finding.text.View());
    AppendNumber(out, "value", finding.value);
    AppendNumber(out, "offset", finding.offset);
    if (!finding.chunk.empty()) {
        out += ", \"chunk\": ";
        AppendJsonString(out, Utf8ToWide(finding.chunk));
    }
    AppendNumber(out, "declared", finding.declared);
    AppendNumber(out, "actual", finding.actual);
    out += "}";
}

std::string FormatSummary(const RunSummary& summary)
{
    return FormatCount(summary.files) + " files: " + FormatCount(summary.sound) + " sound, " +
           FormatCount(summary.withFindings) + " with findings, " + FormatCount(summary.withWarnings) +
           " with warnings, " + FormatCount(summary.unreadable) + " unreadable\n";
}
