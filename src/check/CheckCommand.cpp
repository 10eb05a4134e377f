#include "check/CheckCommand.h"

#include "base/Utf8.h"
#include "check/ChunkList.h"
#include "check/Levels.h"
#include "check/TextFormat.h"
#include "check/TidyCopy.h"
#include "check/WaveCheck.h"
#include "platform/Console.h"

#include <cstdio>

namespace {

constexpr char kUsage[] = "usage: sondara-check [--json] [--chunks | --levels] FILE...\n"
                          "       sondara-check [--json] --tidy OUT FILE";
constexpr char kHelp[] =
    "Checks WAV files as the Sondara window does and prints a report for each.\n"
    "  --chunks    list every chunk: offset, id, declared size, list type and\n"
    "              INFO entries; marks a size that runs past an end\n"
    "  --levels    per channel peak and RMS in dBFS, DC offset and samples at\n"
    "              full scale, and the duration (8, 16 and 24-bit PCM)\n"
    "  --tidy OUT  write a mended copy of FILE to the new path OUT and say\n"
    "              what changed; refused where anything would be lost\n"
    "  --json      the same as one JSON array\n"
    "Exit status: 0 when all is well, 1 when a file has a finding or can't be\n"
    "listed, measured or copied, 2 for bad usage.";

enum class Mode { Check, Chunks, Levels, Tidy };

// Text whose lines end in LF, with the given line end instead.
std::string WithLineEnd(std::string_view text, const char* lineEnd)
{
    if (std::string_view(lineEnd) == "\n")
        return std::string(text);
    std::string converted;
    converted.reserve(text.size() + text.size() / 8);
    for (char c : text) {
        if (c == '\n')
            converted += lineEnd;
        else
            converted += c;
    }
    return converted;
}

// Standard output in pieces of some size, with the platform's line end for
// text; JSON keeps its LF.
class ConsoleSink : public TextSink {
public:
    explicit ConsoleSink(bool json) : json(json) {}
    ~ConsoleSink() override { Flush(); }

    void Put(std::string_view text) override
    {
        pending += json ? std::string(text) : WithLineEnd(text, platform::kLineEnd);
        if (pending.size() >= 64 * 1024)
            Flush();
    }
    void Flush()
    {
        platform::WriteToStandardOutput(pending);
        pending.clear();
    }

private:
    bool json;
    std::string pending;
};

// The message, if any, and the usage on standard error; exit status 2.
int UsageError(const std::string& message)
{
    const std::string text = (message.empty() ? "" : message + "\n") + kUsage + "\n";
    platform::WriteToStandardError(WithLineEnd(text, platform::kLineEnd));
    return 2;
}

// Each file's listing or levels as it is made: in JSON one element of the
// array for each file.
int RunEachFile(Mode mode, bool json, const std::vector<WideString>& paths)
{
    ConsoleSink sink(json);
    bool allWell = true;
    if (json)
        sink.Put("[");
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (json)
            sink.Put(i == 0 ? "\n  " : ",\n  ");
        else if (paths.size() > 1)
            sink.Put("== " + WideToUtf8(paths[i].View()) + "\n");
        if (mode == Mode::Chunks) {
            allWell = ListChunks(paths[i], json, sink) && allWell;
            continue;
        }
        LevelReport report;
        std::string problem;
        const bool measured = MeasureLevels(paths[i], report, problem);
        allWell = measured && allWell;
        if (json) {
            std::string object = "{\"path\": ";
            AppendJsonString(object, paths[i].View());
            if (measured) {
                object += ", " + FormatLevelsJson(report) + "}";
            } else {
                object += ", \"error\": ";
                AppendJsonString(object, Utf8ToWide(problem));
                object += "}";
            }
            sink.Put(object);
        } else {
            sink.Put(measured ? FormatLevelsText(report) : "(" + problem + ")\n");
        }
    }
    if (json)
        sink.Put(paths.empty() ? "]\n" : "\n]\n");
    return allWell ? 0 : 1;
}

int RunTidy(bool json, const WideString& output, const WideString& input)
{
    std::vector<std::string> changes;
    std::string problem;
    const bool written = MakeTidyCopy(input, output, changes, problem);
    ConsoleSink sink(json);
    if (json) {
        std::string object = "[\n  {\"path\": ";
        AppendJsonString(object, input.View());
        object += ", \"output\": ";
        AppendJsonString(object, output.View());
        object += std::string(", \"written\": ") + (written ? "true" : "false");
        if (written) {
            object += ", \"changes\": [";
            for (std::size_t i = 0; i < changes.size(); ++i) {
                object += i ? ", " : "";
                AppendJsonString(object, Utf8ToWide(changes[i]));
            }
            object += "]";
        } else {
            object += ", \"reason\": ";
            AppendJsonString(object, Utf8ToWide(problem));
        }
        sink.Put(object + "}\n]\n");
    } else if (written) {
        for (const std::string& change : changes)
            sink.Put(change + "\n");
        sink.Put((changes.empty() ? "nothing to mend; " : "") + std::string("written to ") + WideToUtf8(output.View()) + "\n");
    } else {
        sink.Put("not written: " + problem + "\n");
    }
    return written ? 0 : 1;
}

} // namespace

std::string FormatJson(const std::vector<CheckResult>& results)
{
    std::string out = "[";
    for (std::size_t i = 0; i < results.size(); ++i) {
        out += i == 0 ? "\n  " : ",\n  ";
        out += "{\"path\": ";
        AppendJsonString(out, results[i].path.View());
        out += ", \"report\": ";
        AppendJsonString(out, results[i].report.View());
        out += ", \"hasError\": ";
        out += results[i].hasError ? "true" : "false";
        out += "}";
    }
    out += results.empty() ? "]\n" : "\n]\n";
    return out;
}

std::string FormatText(const std::vector<CheckResult>& results, const char* lineEnd)
{
    std::string out;
    for (const CheckResult& result : results) {
        if (results.size() > 1)
            out += "== " + WideToUtf8(result.path.View()) + "\n";
        // Lines end in LF here and take the platform's line end below.
        out += WideToUtf8(result.report.Replaced(u"\r\n", u"\n").View());
    }
    return WithLineEnd(out, lineEnd);
}

int ConsoleMain(const std::vector<std::u16string>& arguments)
{
    bool json = false;
    bool optionsEnded = false;
    Mode mode = Mode::Check;
    WideString output;
    std::vector<WideString> paths;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::u16string& argument = arguments[i];
        if (!optionsEnded && argument == u"--help") {
            platform::WriteToStandardOutput(WithLineEnd(std::string(kUsage) + "\n" + kHelp + "\n", platform::kLineEnd));
            return 0;
        }
        const bool modeOption = argument == u"--chunks" || argument == u"--levels" || argument == u"--tidy";
        if (!optionsEnded && modeOption && mode != Mode::Check) {
            return UsageError("sondara-check: --chunks, --levels and --tidy go one at a time");
        } else if (!optionsEnded && argument == u"--json") {
            json = true;
        } else if (!optionsEnded && argument == u"--chunks") {
            mode = Mode::Chunks;
        } else if (!optionsEnded && argument == u"--levels") {
            mode = Mode::Levels;
        } else if (!optionsEnded && argument == u"--tidy") {
            if (i + 1 == arguments.size())
                return UsageError("sondara-check: --tidy needs the path of the copy");
            mode = Mode::Tidy;
            output = WideString(arguments[++i]);
        } else if (!optionsEnded && argument == u"--") {
            optionsEnded = true;
        } else if (!optionsEnded && argument.size() > 1 && argument[0] == u'-') {
            return UsageError("sondara-check: unknown option " + WideToUtf8(argument));
        } else {
            paths.emplace_back(argument);
        }
    }
    if (paths.empty())
        return UsageError("");
    if (mode == Mode::Tidy) {
        if (paths.size() != 1)
            return UsageError("sondara-check: --tidy copies one file at a time");
        return RunTidy(json, output, paths[0]);
    }
    if (mode != Mode::Check)
        return RunEachFile(mode, json, paths);

    std::vector<CheckResult> results;
    bool anyFinding = false;
    for (const WideString& path : paths) {
        CheckResult result{path, {}, false};
        RunWaveCheck(path, result.report, result.hasError);
        anyFinding = anyFinding || result.hasError;
        results.push_back(result);
    }
    platform::WriteToStandardOutput(json ? FormatJson(results) : FormatText(results, platform::kLineEnd));
    return anyFinding ? 1 : 0;
}
