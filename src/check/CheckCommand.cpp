#include "check/CheckCommand.h"

#include "base/Utf8.h"
#include "check/CheckRun.h"
#include "check/ChunkList.h"
#include "check/ConsoleSink.h"
#include "check/DeliveryTarget.h"
#include "check/FileSources.h"
#include "check/Levels.h"
#include "check/TextFormat.h"
#include "check/TidyCopy.h"
#include "platform/Console.h"

#include "platform/ProgramVersion.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr char kUsage[] = "usage: sondara-check [--json | --jsonl | --csv] [--strict] [-j N] FILE...\n"
                          "       sondara-check [--json] [--chunks | --levels [--loudness] [--target NAME]] FILE...\n"
                          "       sondara-check [--json] --tidy OUT FILE";
constexpr char kHelp[] =
    "Checks WAV files as the Sondara window does and prints a report for each,\n"
    "followed by warnings of what the report leaves unsaid.\n"
    "A FILE may be a folder (every .wav file below it, in sorted order) or -\n"
    "(paths from standard input, one a line).\n"
    "  --json      one JSON array: path, report, hasError and findings\n"
    "  --jsonl     one JSON object a line, and a summary line at the end\n"
    "  --csv       one row a finding (UTF-8 with a byte order mark)\n"
    "  --strict    warnings count as findings for the exit status\n"
    "  -j N        check N files at once (default: one a core)\n"
    "  --chunks    list every chunk: offset, id, declared size, list type and\n"
    "              INFO entries; marks a size that runs past an end\n"
    "  --levels    per channel peak and RMS in dBFS, DC offset and samples at\n"
    "              full scale, and the duration (8 to 32-bit PCM, 32 and\n"
    "              64-bit float)\n"
    "  --loudness  --levels with the loudness (integrated, range, momentary\n"
    "              and short-term maximum) and each channel's true peak\n"
    "  --target NAME   --loudness against ebu-r128, atsc-a85 or streaming;\n"
    "              a miss makes the exit status 1\n"
    "  --target-lufs X [--tolerance Y] [--max-true-peak Z]   a target of\n"
    "              your own (default tolerance 1 LU, at most -1 dBTP)\n"
    "  --tidy OUT  write a mended copy of FILE to the new path OUT and say\n"
    "              what changed; refused where anything would be lost\n"
    "  --version   the version of sondara-check\n"
    "Exit status:\n"
    "  0  every report is clear (warnings alone too, unless --strict)\n"
    "  1  a report has a finding, a path can't be read, or with --strict a\n"
    "     file has a warning; a file can't be listed, measured or copied\n"
    "  2  bad usage";

enum class Mode { Check, Chunks, Levels, Tidy };

// The message, if any, and the usage on standard error; exit status 2.
int UsageError(const std::string& message)
{
    const std::string text = (message.empty() ? "" : message + "\n") + kUsage + "\n";
    platform::WriteToStandardError(WithLineEnd(text, platform::kLineEnd));
    return 2;
}

// Each file's listing or levels as it is made: in JSON one element of the
// array for each file.
// What --levels measures beyond the levels: loudness, and a target.
struct LevelOptions {
    bool loudness = false;
    bool hasTarget = false;
    DeliveryTarget target;
};

int RunEachFile(Mode mode, bool json, const std::vector<WideString>& paths, const LevelOptions& levelOptions = {})
{
    ConsoleSink sink(json ? ConsoleSink::Bytes::Exact : ConsoleSink::Bytes::Text);
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
        const bool measured = MeasureLevels(paths[i], report, problem, levelOptions.loudness);
        allWell = measured && allWell;
        std::vector<std::string> misses;
        if (measured && levelOptions.hasTarget) {
            misses = TargetMisses(levelOptions.target, report.loudness);
            allWell = allWell && misses.empty();
        }
        if (json) {
            std::string object = "{\"path\": ";
            AppendJsonString(object, paths[i].View());
            if (measured) {
                object += ", " + FormatLevelsJson(report);
                if (levelOptions.hasTarget) {
                    object += ", \"target\": {\"name\": ";
                    AppendJsonString(object, Utf8ToWide(levelOptions.target.name));
                    object += std::string(", \"pass\": ") + (misses.empty() ? "true" : "false") + ", \"misses\": [";
                    for (std::size_t m = 0; m < misses.size(); ++m) {
                        object += m ? ", " : "";
                        AppendJsonString(object, Utf8ToWide(misses[m]));
                    }
                    object += "]}";
                }
                object += "}";
            } else {
                object += ", \"error\": ";
                AppendJsonString(object, Utf8ToWide(problem));
                object += "}";
            }
            sink.Put(object);
        } else {
            std::string text = measured ? FormatLevelsText(report) : "(" + problem + ")\n";
            if (measured && levelOptions.hasTarget) {
                if (misses.empty())
                    text += "target " + levelOptions.target.name + ": pass\n";
                for (const std::string& miss : misses)
                    text += "target " + levelOptions.target.name + ": " + miss + "\n";
            }
            sink.Put(text);
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
    ConsoleSink sink(json ? ConsoleSink::Bytes::Exact : ConsoleSink::Bytes::Text);
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

// A number such as "-23", "0.5" or "+1": false when it is none.
bool ParseDecibels(const std::u16string& text, double& value)
{
    std::string ascii;
    for (char16_t unit : text) {
        if (unit >= 0x80)
            return false;
        ascii += static_cast<char>(unit);
    }
    char* end = nullptr;
    value = std::strtod(ascii.c_str(), &end);
    return !ascii.empty() && end && *end == '\0' && std::isfinite(value);
}

// The number behind -j: a whole number from 1 to 256; 0 when it is none.
unsigned ParseJobs(const std::u16string& text)
{
    if (text.empty() || text.size() > 3)
        return 0;
    unsigned jobs = 0;
    for (char16_t unit : text) {
        if (unit < u'0' || unit > u'9')
            return 0;
        jobs = jobs * 10 + (unit - u'0');
    }
    return jobs <= 256 ? jobs : 0;
}

} // namespace

int ConsoleMain(const std::vector<std::u16string>& arguments)
{
    bool json = false;
    bool optionsEnded = false;
    Mode mode = Mode::Check;
    CheckRunOptions run;
    bool formatChosen = false;
    WideString output;
    std::vector<WideString> paths;
    LevelOptions levelOptions;
    bool customTarget = false;
    double customFigures[3] = {0, 0, 0};
    bool customGiven[3] = {false, false, false};
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::u16string& argument = arguments[i];
        if (!optionsEnded && argument == u"--version") {
            WriteWholeToStandardOutput(WithLineEnd("sondara-check " SONDARA_VERSION_DOTTED "\n", platform::kLineEnd));
            return 0;
        }
        if (!optionsEnded && argument == u"--help") {
            WriteWholeToStandardOutput(WithLineEnd(std::string(kUsage) + "\n" + kHelp + "\n", platform::kLineEnd));
            return 0;
        }
        const bool modeOption = argument == u"--chunks" || argument == u"--levels" || argument == u"--tidy";
        const bool formatOption = argument == u"--json" || argument == u"--jsonl" || argument == u"--csv";
        if (optionsEnded || argument.size() < 2 || argument[0] != u'-') {
            paths.emplace_back(argument);
        } else if (modeOption && mode != Mode::Check) {
            return UsageError("sondara-check: --chunks, --levels and --tidy go one at a time");
        } else if (formatOption && formatChosen) {
            return UsageError("sondara-check: --json, --jsonl and --csv go one at a time");
        } else if (argument == u"--json") {
            json = true;
            formatChosen = true;
            run.format = OutputFormat::Json;
        } else if (argument == u"--jsonl") {
            formatChosen = true;
            run.format = OutputFormat::JsonLines;
        } else if (argument == u"--csv") {
            formatChosen = true;
            run.format = OutputFormat::Csv;
        } else if (argument == u"--strict") {
            run.strict = true;
        } else if (argument.rfind(u"-j", 0) == 0) {
            const bool separate = argument.size() == 2;
            if (separate && i + 1 == arguments.size())
                return UsageError("sondara-check: -j needs a number of files to check at once");
            run.jobs = ParseJobs(separate ? arguments[++i] : argument.substr(2));
            if (run.jobs == 0)
                return UsageError("sondara-check: -j takes a number from 1 to 256");
        } else if (argument == u"--loudness") {
            if (mode != Mode::Check && mode != Mode::Levels)
                return UsageError("sondara-check: --chunks, --levels and --tidy go one at a time");
            mode = Mode::Levels;
            levelOptions.loudness = true;
        } else if (argument == u"--target") {
            if (i + 1 == arguments.size() || !FindDeliveryTarget(WideToUtf8(arguments[i + 1]), levelOptions.target))
                return UsageError("sondara-check: --target takes ebu-r128, atsc-a85 or streaming");
            ++i;
            levelOptions.hasTarget = true;
            levelOptions.loudness = true;
            mode = Mode::Levels;
        } else if (argument == u"--target-lufs" || argument == u"--tolerance" || argument == u"--max-true-peak") {
            const int which = argument == u"--target-lufs" ? 0 : argument == u"--tolerance" ? 1 : 2;
            double value = 0;
            if (i + 1 == arguments.size() || !ParseDecibels(arguments[i + 1], value))
                return UsageError("sondara-check: " + WideToUtf8(argument) + " takes a number");
            ++i;
            customFigures[which] = value;
            customGiven[which] = true;
            customTarget = true;
        } else if (argument == u"--chunks") {
            mode = Mode::Chunks;
        } else if (argument == u"--levels") {
            mode = Mode::Levels;
        } else if (argument == u"--tidy") {
            if (i + 1 == arguments.size())
                return UsageError("sondara-check: --tidy needs the path of the copy");
            mode = Mode::Tidy;
            output = WideString(arguments[++i]);
        } else if (argument == u"--") {
            optionsEnded = true;
        } else {
            return UsageError("sondara-check: unknown option " + WideToUtf8(argument));
        }
    }
    if (customTarget) {
        if (!customGiven[0] || levelOptions.hasTarget)
            return UsageError("sondara-check: --target-lufs sets a target of your own, instead of --target");
        levelOptions.target = {"own", customFigures[0], customGiven[1] ? customFigures[1] : 1.0,
                               customGiven[2] ? customFigures[2] : -1.0};
        levelOptions.hasTarget = true;
        levelOptions.loudness = true;
        mode = Mode::Levels;
    }
    if (paths.empty())
        return UsageError("");
    if (mode != Mode::Check && (run.format == OutputFormat::JsonLines || run.format == OutputFormat::Csv))
        return UsageError("sondara-check: --jsonl and --csv go with the check only");
    if (mode == Mode::Tidy) {
        if (paths.size() != 1)
            return UsageError("sondara-check: --tidy copies one file at a time");
        return RunTidy(json, output, paths[0]);
    }

    std::vector<SourcePath> sources;
    ExpandSources(paths, sources);
    if (mode != Mode::Check) {
        std::vector<WideString> files;
        for (const SourcePath& source : sources)
            files.push_back(source.path);
        return RunEachFile(mode, json, files, levelOptions);
    }
    ConsoleSink sink(run.format == OutputFormat::Text ? ConsoleSink::Bytes::Text : ConsoleSink::Bytes::Exact);
    return RunChecks(sources, run, sink);
}
