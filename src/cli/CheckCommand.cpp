#include "cli/CheckCommand.h"

#include "base/TextFormat.h"
#include "base/Utf8.h"
#include "cli/CheckOptions.h"
#include "cli/CheckRun.h"
#include "cli/ChunkList.h"
#include "cli/ConsoleSink.h"
#include "cli/FileSources.h"
#include "measure/DeliveryTarget.h"
#include "measure/Levels.h"
#include "mend/TidyCopy.h"
#include "platform/Console.h"

#include "platform/ProgramVersion.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

enum class Mode { Check, Chunks, Levels, Tidy };

// The message, if any, and the usage on standard error; exit status 2.
int UsageError(const std::string& message)
{
    const std::string text = (message.empty() ? "" : message + "\n") + UsageText();
    platform::WriteToStandardError(WithLineEnd(text, platform::kLineEnd));
    return 2;
}

// What --levels measures beyond the levels: loudness, and a target.
struct LevelOptions {
    bool loudness = false;
    bool hasTarget = false;
    DeliveryTarget target;
};

// A miss as JSON: what was measured, on which channel, the figure as
// printed and the limit it crossed, beside the sentence.
std::string TargetMissJson(const TargetMiss& miss)
{
    std::string json = std::string("{\"measure\": \"") + MeasureName(miss.measure) + "\", \"channel\": " +
                       (miss.channel ? std::to_string(*miss.channel) : "null") + ", \"value\": " +
                       (std::isfinite(miss.value) ? FormatFixed(miss.value, 1) : "null") +
                       ", \"limit\": " + FormatFixed(miss.limit, 2) + ", \"message\": ";
    AppendJsonString(json, Utf8ToWide(miss.text));
    return json + "}";
}

// One file's levels, and its target's verdict, to the sink; false when it
// can't be measured, holds samples that are no number or misses the target.
bool MeasureFile(const WideString& path, bool json, const LevelOptions& levelOptions, TextSink& sink)
{
    LevelReport report;
    std::string problem;
    const bool measured = MeasureLevels(path, report, problem, levelOptions.loudness);
    // Samples that are no number are left out of every figure, and the
    // file is not sound for having them.
    bool sound = measured && CountNonFinite(report) == 0;
    std::vector<TargetMiss> misses;
    if (measured && levelOptions.hasTarget) {
        misses = FindTargetMisses(levelOptions.target, report.loudness);
        sound = sound && misses.empty();
    }
    if (json) {
        std::string object = "{\"path\": ";
        AppendJsonString(object, path.View());
        if (measured) {
            object += ", " + FormatLevelsJson(report);
            if (levelOptions.hasTarget) {
                object += ", \"target\": {\"name\": ";
                AppendJsonString(object, Utf8ToWide(levelOptions.target.name));
                object += std::string(", \"pass\": ") + (misses.empty() ? "true" : "false") + ", \"misses\": [";
                for (std::size_t m = 0; m < misses.size(); ++m)
                    object += (m ? ", " : "") + TargetMissJson(misses[m]);
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
            for (const TargetMiss& miss : misses)
                text += "target " + levelOptions.target.name + ": " + miss.text + "\n";
        }
        sink.Put(text);
    }
    return sound;
}

// Each file's listing or levels as it is made: in JSON one element of the
// array for each file. On a terminal each goes out once it is whole.
int RunEachFile(Mode mode, bool json, const std::vector<WideString>& paths, const LevelOptions& levelOptions = {})
{
    ConsoleSink sink(json ? ConsoleSink::Bytes::Exact : ConsoleSink::Bytes::Text);
    const bool flushEachFile = platform::IsStandardOutputTerminal();
    bool allWell = true;
    if (json)
        sink.Put("[");
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (json)
            sink.Put(i == 0 ? "\n  " : ",\n  ");
        else if (paths.size() > 1)
            sink.Put("== " + WideToPathUtf8(paths[i].View()) + "\n");
        if (mode == Mode::Chunks)
            allWell = ListChunks(paths[i], json, sink) && allWell;
        else
            allWell = MeasureFile(paths[i], json, levelOptions, sink) && allWell;
        if (flushEachFile)
            sink.Flush();
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
        sink.Put((changes.empty() ? "nothing to mend; " : "") + std::string("written to ") + WideToPathUtf8(output.View()) + "\n");
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

// What the command line asks for, read as flags in any order; which mode
// they make is decided once they are all read.
struct CommandLine {
    OutputFormat format = OutputFormat::Text;
    int formats = 0;
    bool strict = false;
    unsigned jobs = 0;
    bool nulSeparated = false;
    bool chunks = false;
    bool levels = false;
    bool loudness = false;
    bool tidy = false;
    WideString tidyOutput;
    std::string targetName;
    double customFigures[3] = {0, 0, 0};
    bool customGiven[3] = {false, false, false};
    std::vector<WideString> paths;
};

constexpr char kOneMode[] = "sondara-check: --chunks, --levels and --tidy go one at a time";

} // namespace

int ConsoleMain(const std::vector<std::u16string>& arguments)
{
    CommandLine line;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::u16string& argument = arguments[i];
        const bool hasValue = i + 1 < arguments.size();
        if (optionsEnded || argument.size() < 2 || argument[0] != u'-') {
            line.paths.emplace_back(argument);
        } else if (!IsCheckOption(argument)) {
            return UsageError("sondara-check: unknown option " + WideToUtf8(argument));
        } else if (argument == u"--version") {
            WriteWholeToStandardOutput(WithLineEnd("sondara-check " SONDARA_VERSION_DOTTED "\n", platform::kLineEnd));
            return 0;
        } else if (argument == u"--help") {
            WriteWholeToStandardOutput(WithLineEnd(HelpText(), platform::kLineEnd));
            return 0;
        } else if (argument == u"--json" || argument == u"--jsonl" || argument == u"--csv") {
            line.format = argument == u"--json" ? OutputFormat::Json
                        : argument == u"--jsonl" ? OutputFormat::JsonLines : OutputFormat::Csv;
            ++line.formats;
        } else if (argument == u"--strict") {
            line.strict = true;
        } else if (argument == u"-0") {
            line.nulSeparated = true;
        } else if (argument.rfind(u"-j", 0) == 0) {
            const bool separate = argument.size() == 2;
            if (separate && !hasValue)
                return UsageError("sondara-check: -j needs a number of files to check at once");
            line.jobs = ParseJobs(separate ? arguments[++i] : argument.substr(2));
            if (line.jobs == 0)
                return UsageError("sondara-check: -j takes a number from 1 to 256");
        } else if (argument == u"--chunks") {
            line.chunks = true;
        } else if (argument == u"--levels") {
            line.levels = true;
        } else if (argument == u"--loudness") {
            line.loudness = true;
        } else if (argument == u"--target") {
            DeliveryTarget known;
            if (!hasValue || !FindDeliveryTarget(WideToUtf8(arguments[i + 1]), known))
                return UsageError("sondara-check: --target takes ebu-r128, atsc-a85 or streaming");
            line.targetName = known.name;
            ++i;
        } else if (argument == u"--target-lufs" || argument == u"--tolerance" || argument == u"--max-true-peak") {
            const int which = argument == u"--target-lufs" ? 0 : argument == u"--tolerance" ? 1 : 2;
            if (!hasValue || !ParseDecibels(arguments[i + 1], line.customFigures[which]))
                return UsageError("sondara-check: " + WideToUtf8(argument) + " takes a number");
            line.customGiven[which] = true;
            ++i;
        } else if (argument == u"--tidy") {
            if (!hasValue)
                return UsageError("sondara-check: --tidy needs the path of the copy");
            line.tidy = true;
            line.tidyOutput = WideString(arguments[++i]);
        } else if (argument == u"--") {
            optionsEnded = true;
        } else {
            return UsageError("sondara-check: unknown option " + WideToUtf8(argument));
        }
    }

    // The mode: the loudness and the targets are parts of the levels.
    const bool customTarget = line.customGiven[0] || line.customGiven[1] || line.customGiven[2];
    const bool levels = line.levels || line.loudness || !line.targetName.empty() || customTarget;
    if (int{line.chunks} + int{levels} + int{line.tidy} > 1)
        return UsageError(kOneMode);
    if (line.formats > 1)
        return UsageError("sondara-check: --json, --jsonl and --csv go one at a time");
    const Mode mode = line.chunks ? Mode::Chunks : levels ? Mode::Levels : line.tidy ? Mode::Tidy : Mode::Check;
    LevelOptions levelOptions;
    levelOptions.loudness = line.loudness || !line.targetName.empty() || customTarget;
    if (!line.targetName.empty()) {
        FindDeliveryTarget(line.targetName, levelOptions.target);
        levelOptions.hasTarget = true;
    }
    if (customTarget) {
        if (!line.customGiven[0] || levelOptions.hasTarget)
            return UsageError("sondara-check: --target-lufs sets a target of your own, instead of --target");
        levelOptions.target = {"own", line.customFigures[0], line.customGiven[1] ? line.customFigures[1] : 1.0,
                               line.customGiven[2] ? line.customFigures[2] : -1.0};
        levelOptions.hasTarget = true;
    }
    if (line.paths.empty())
        return UsageError("");
    const bool json = line.format == OutputFormat::Json;
    if (mode != Mode::Check && (line.format == OutputFormat::JsonLines || line.format == OutputFormat::Csv))
        return UsageError("sondara-check: --jsonl and --csv go with the check only");
    if (mode == Mode::Tidy) {
        if (line.paths.size() != 1)
            return UsageError("sondara-check: --tidy copies one file at a time");
        return RunTidy(json, line.tidyOutput, line.paths[0]);
    }

    std::vector<SourcePath> sources;
    std::vector<std::string> nothingFound;
    ExpandSources(line.paths, SourceOptions{line.nulSeparated}, sources, nothingFound);
    int status = 0;
    if (mode != Mode::Check) {
        std::vector<WideString> files;
        for (const SourcePath& source : sources)
            files.push_back(source.path);
        status = RunEachFile(mode, json, files, levelOptions);
    } else {
        ConsoleSink sink(line.format == OutputFormat::Text ? ConsoleSink::Bytes::Text : ConsoleSink::Bytes::Exact);
        CheckRunOptions run;
        run.format = line.format;
        run.jobs = line.jobs;
        run.strict = line.strict;
        run.flushEachFile = line.format == OutputFormat::JsonLines || platform::IsStandardOutputTerminal();
        status = RunChecks(sources, run, sink);
    }
    for (const std::string& message : nothingFound)
        platform::WriteToStandardError(WithLineEnd(message + "\n", platform::kLineEnd));
    return nothingFound.empty() ? status : 1;
}
