// Makes the tables of the documents from the tables of the code: every
// finding of check/Finding.cpp and every option of cli/CheckOptions.cpp.
// A document holds each made table between two marker lines.
//
//   doc-tables write SOURCE_ROOT   puts the tables as made now between them
//   doc-tables check SOURCE_ROOT   says where a document differs from them
//
// "check" also says which options and findings a hand-written text lacks:
// the man page describes each option in its own words, and the guide in
// Japanese describes both options and findings. Exit status 0 when all is
// as it should be (or written), 1 otherwise, 2 for bad usage.

#include "base/Utf8.h"
#include "check/Finding.h"
#include "cli/CheckOptions.h"

#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

enum class Form { Markdown, Roff };

struct MadeTable {
    const char* file;  // relative to the source root
    const char* name;  // the name in its markers
    Form form;
    std::string (*make)();
};

// ---------------------------------------------------------------------------
// Markdown

std::string MarkdownCell(std::string_view text)
{
    std::string cell;
    for (char c : text) {
        if (c == '|')
            cell += '\\';
        cell += c == '\n' ? ' ' : c;
    }
    return cell;
}

std::string FindingsMarkdown()
{
    std::string out = "| code | severity | message | text | what to do |\n|---|---|---|---|---|\n";
    std::size_t count = 0;
    const FindingKind* kinds = FindingKinds(count);
    for (std::size_t i = 0; i < count; ++i) {
        const FindingKind& kind = kinds[i];
        out += std::string("| `") + kind.code + "` | " + SeverityName(kind.severity) + " | " +
               MarkdownCell(kind.message) + " | " + MarkdownCell(WideToUtf8(kind.text)) + " | " +
               MarkdownCell(kind.advice) + " |\n";
    }
    return out;
}

std::string UsageMarkdown()
{
    return "```\n" + UsageText() + "```\n";
}

std::string OptionsMarkdown()
{
    std::string out = "| option | what it does |\n|---|---|\n";
    for (const CheckOption& option : CheckOptionTable()) {
        out += std::string("| `") + option.spelling + (*option.argument ? " " : "") + option.argument + "` | " +
               MarkdownCell(option.summary) + " |\n";
    }
    return out;
}

// ---------------------------------------------------------------------------
// roff, for the man page

// The dashes of a word that begins with one are an option's or a minus
// sign, which roff writes \-; a dash inside a word is a hyphen and stays.
std::string RoffText(std::string_view text)
{
    std::string out;
    bool dashed = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool wordStart = i == 0 || std::isspace(static_cast<unsigned char>(text[i - 1])) || text[i - 1] == '(';
        if (wordStart)
            dashed = c == '-';
        if (c == '\\')
            out += "\\e";
        else if (c == '-' && dashed)
            out += "\\-";
        else
            out += c;
    }
    if (!out.empty() && (out[0] == '.' || out[0] == '\''))
        out.insert(0, "\\&");
    return out;
}

// Each finding as a tagged paragraph, under a heading for each severity.
std::string FindingsRoff()
{
    std::string out;
    std::size_t count = 0;
    const FindingKind* kinds = FindingKinds(count);
    for (std::size_t i = 0; i < count; ++i) {
        const FindingKind& kind = kinds[i];
        const bool newGroup = i == 0 || kinds[i - 1].severity != kind.severity;
        if (newGroup)
            out += kind.severity == Severity::Error ? ".SS Errors\n" : ".SS Warnings\n";
        out += newGroup ? ".TP 28\n" : ".TP\n";
        out += ".B " + RoffText(kind.code) + "\n" + RoffText(kind.message) + "\n" + RoffText(kind.advice) + "\n";
    }
    return out;
}

// How the man page introduces an option in its list: ".B \-\-json", or
// ".BI \-j " N"" for one with an argument.
std::string RoffOptionTag(const CheckOption& option)
{
    if (!*option.argument)
        return ".B " + RoffText(option.spelling);
    return ".BI " + RoffText(option.spelling) + " \" " + option.argument + "\"";
}

// ---------------------------------------------------------------------------
// The documents

constexpr MadeTable kMadeTables[] = {
    {"docs/findings.md", "findings", Form::Markdown, FindingsMarkdown},
    {"docs/checker.md", "usage", Form::Markdown, UsageMarkdown},
    {"docs/checker.md", "options", Form::Markdown, OptionsMarkdown},
    {"packaging/sondara-check.1", "findings", Form::Roff, FindingsRoff},
};

constexpr char kManPage[] = "packaging/sondara-check.1";
constexpr char kGuide[] = "packaging/guide-ja.txt";

std::string BeginMarker(const MadeTable& table)
{
    const std::string words = std::string("begin ") + table.name + " (made by tools/doc-tables from the code)";
    return table.form == Form::Markdown ? "<!-- " + words + " -->\n" : ".\\\" " + words + "\n";
}

std::string EndMarker(const MadeTable& table)
{
    const std::string words = std::string("end ") + table.name;
    return table.form == Form::Markdown ? "<!-- " + words + " -->\n" : ".\\\" " + words + "\n";
}

bool ReadWhole(const std::string& path, std::string& text)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return false;
    text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return true;
}

// A code or an option in running text: not a part of a longer one
// ("data.size" in "data.size-placeholder", "--json" in "--jsonl"). A full
// stop after it may end a sentence.
bool HasWord(const std::string& text, std::string_view word)
{
    const auto wordByte = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '.'; };
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        const bool clearBefore = at == 0 || !wordByte(text[at - 1]);
        const bool clearAfter = end == text.size() || !wordByte(text[end]) ||
                                (text[end] == '.' && (end + 1 == text.size() || !wordByte(text[end + 1])));
        if (clearBefore && clearAfter)
            return true;
    }
    return false;
}

// What the hand-written texts lack, one line each.
std::vector<std::string> MissingFromTexts(const std::string& root)
{
    std::vector<std::string> problems;
    std::string manPage, guide;
    if (!ReadWhole(root + "/" + kManPage, manPage) || !ReadWhole(root + "/" + kGuide, guide))
        return {"the man page or the guide can't be read"};
    for (const CheckOption& option : CheckOptionTable()) {
        if (manPage.find(".TP\n" + RoffOptionTag(option) + "\n") == std::string::npos)
            problems.push_back(std::string(kManPage) + " lists no option " + RoffOptionTag(option));
        if (!HasWord(guide, option.spelling))
            problems.push_back(std::string(kGuide) + " says nothing of the option " + option.spelling);
    }
    std::size_t count = 0;
    const FindingKind* kinds = FindingKinds(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (!HasWord(guide, kinds[i].code))
            problems.push_back(std::string(kGuide) + " lacks the code " + kinds[i].code);
        if (guide.find(WideToUtf8(kinds[i].text)) == std::string::npos)
            problems.push_back(std::string(kGuide) + " lacks the text of " + kinds[i].code + ": " +
                               WideToUtf8(kinds[i].text));
    }
    return problems;
}

// Puts each made table between its markers, in the documents' text as
// read; says which documents lack their markers, and which tables differ.
int Run(bool write, const std::string& root)
{
    std::vector<std::string> problems;
    for (const char* file : {"docs/findings.md", "docs/checker.md", kManPage}) {
        const std::string path = root + "/" + file;
        std::string text;
        if (!ReadWhole(path, text)) {
            problems.push_back(std::string(file) + " can't be read");
            continue;
        }
        std::string made = text;
        for (const MadeTable& table : kMadeTables) {
            if (std::string_view(table.file) != file)
                continue;
            const std::size_t begin = made.find(BeginMarker(table));
            const std::size_t end = begin == std::string::npos ? begin : made.find(EndMarker(table), begin);
            if (end == std::string::npos) {
                problems.push_back(std::string(file) + " lacks the lines " + BeginMarker(table) + "and " +
                                   EndMarker(table));
                continue;
            }
            const std::size_t from = begin + BeginMarker(table).size();
            made.replace(from, end - from, table.make());
        }
        if (made == text)
            continue;
        if (!write) {
            problems.push_back(std::string(file) + " holds tables that differ from the code's: run doc-tables write");
            continue;
        }
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out << made;
        if (!out.flush())
            problems.push_back(std::string(file) + " could not be written");
        else
            std::printf("doc-tables: wrote %s\n", file);
    }
    for (const std::string& problem : MissingFromTexts(root))
        problems.push_back(problem);
    for (const std::string& problem : problems)
        std::fprintf(stderr, "doc-tables: %s\n", problem.c_str());
    return problems.empty() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc == 3 ? argv[1] : "";
    if (mode != "write" && mode != "check") {
        std::fprintf(stderr, "usage: doc-tables write|check SOURCE_ROOT\n");
        return 2;
    }
    return Run(mode == "write", argv[2]);
}
