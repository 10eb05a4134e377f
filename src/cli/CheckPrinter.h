#pragma once

#include "check/FileCheck.h"
#include "cli/TextSink.h"
#include "measure/FormatFacts.h"
#include "policy/PolicyJudge.h"

#include <cstdint>
#include <memory>
#include <string>

// How many files of a run came out which way. Each file counts once: a
// file that can't be read, else one whose report has a finding, else one
// with warnings, else a sound one.
struct RunSummary {
    std::int64_t files = 0;
    std::int64_t sound = 0;
    std::int64_t withFindings = 0;
    std::int64_t withWarnings = 0;
    std::int64_t unreadable = 0;

    void Count(const FileCheck& check);
    void CountUnreadable();
};

enum class OutputFormat { Text, Json, JsonLines, Csv };

// Prints the files of a run as they come, in one format, to a sink; the
// checking knows nothing of formats. A path that can't be checked at all
// (a folder that can't be read, a link loop) comes as Unreadable.
class CheckPrinter {
public:
    virtual ~CheckPrinter() = default;
    virtual void Begin() {}
    // facts: what the file's header says of its audio; verdict: the
    // policy's on the file, when the run has one.
    virtual void File(const FileCheck& check, const FormatFacts& facts, const PolicyVerdict* verdict) = 0;
    virtual void Unreadable(const WideString& path, const std::string& reason) = 0;
    virtual void End(const RunSummary& summary) = 0;
};

// headed: each file's text is headed by "== PATH" (a run of several files).
std::unique_ptr<CheckPrinter> MakeCheckPrinter(OutputFormat format, TextSink& sink, bool headed);

// A warning as a line of text, marked as such: "注意：" and its text, LF.
std::string WarningLine(const Finding& warning);
// The header facts as a JSON object, null where the header can't tell.
std::string FormatFactsJson(const FormatFacts& facts);
// One finding as a JSON object, ASCII only.
void AppendFindingJson(std::string& out, const Finding& finding);
// The summary as a line of text, ending in LF.
std::string FormatSummary(const RunSummary& summary);
