#include "cli/CheckCommand.h"

#include "base/TextFormat.h"
#include "base/Utf8.h"
#include "cli/CheckRun.h"
#include "cli/ChunkList.h"
#include "cli/InfoPrinter.h"
#include "cli/CommandLine.h"
#include "cli/ConsoleSink.h"
#include "cli/FileSources.h"
#include "cli/LevelWarnings.h"
#include "cli/LevelsPrinter.h"
#include "cli/Md5Verdict.h"
#include "cli/ProgressLine.h"
#include "measure/AudioMd5.h"
#include "measure/DeliveryTarget.h"
#include "measure/Levels.h"
#include "mend/TidyCopy.h"
#include "platform/Console.h"
#include "wave/FileLayout.h"
#include "wave/Md5Chunk.h"

#include <cmath>

namespace {

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

// What --md5 adds to a file's levels, or says alone: the verdict on its
// MD5 beside the stored one, or why there is none. sound goes false with a
// finding, or without an MD5.
std::string Md5Part(bool json, const AudioMd5& md5, const StoredMd5& stored, bool& sound)
{
    if (!md5.IsComputed()) {
        sound = false;
        if (!json)
            return "md5: not computed: " + md5.GetProblem() + "\n";
        std::string object = "\"md5\": {\"error\": ";
        AppendJsonString(object, Utf8ToWide(md5.GetProblem()));
        return object + "}";
    }
    const Md5Verdict verdict = JudgeMd5(md5.GetDigest(), stored);
    sound = sound && verdict.findings.empty();
    return json ? FormatMd5Json(verdict) : FormatMd5Text(verdict);
}

// One file's levels, its target's verdict and its MD5, as asked, to the
// sink; false when it can't be measured, holds samples that are no number,
// misses the target or its MD5 has a finding.
bool MeasureFile(const WideString& path, bool json, const LevelOptions& levelOptions, TextSink& sink)
{
    LevelReport report;
    std::string problem;
    bool measured = false;
    AudioMd5 md5;
    StoredMd5 stored;
    {
        Md5ChunkFinder finder;
        FileLayout layout(path, kLevelsReading, levelOptions.md5 ? &finder : nullptr);
        ProgressLine progress;
        const std::string name = WideToUtf8(path.View());
        const MeasureProgress shown = [&](std::int64_t done, std::int64_t total) {
            if (total > 0)
                progress.Update([&] { return "measuring " + name + ": " + std::to_string(done * 100 / total) + "%"; });
        };
        measured = levelOptions.levels ? MeasureLevels(layout, report, problem, levelOptions.loudness, shown,
                                                       levelOptions.meters, levelOptions.md5 ? &md5 : nullptr)
                                       : HashAudio(layout, md5, problem, shown);
        if (measured && levelOptions.md5)
            stored = FindStoredMd5(layout, finder);
    }
    // What the audio shows beyond its figures; with --strict, a warning
    // fails the file as it fails a check.
    const bool levels = measured && levelOptions.levels;
    const std::vector<Finding> warnings = levels ? FindLevelWarnings(report) : std::vector<Finding>();
    // Samples that are no number are left out of every figure, and the
    // file is not sound for having them.
    bool sound = measured && (!levels || CountNonFinite(report) == 0);
    std::vector<TargetMiss> misses;
    if (levels && levelOptions.hasTarget) {
        misses = FindTargetMisses(levelOptions.target, report.loudness);
        sound = sound && misses.empty();
    }
    sound = sound && !(levelOptions.strict && !warnings.empty());
    const std::string md5Part = measured && levelOptions.md5 ? Md5Part(json, md5, stored, sound) : "";
    if (json) {
        std::string object = "{\"path\": ";
        AppendJsonString(object, path.View());
        if (levels) {
            object += ", " + FormatLevelsJson(report, warnings);
            if (levelOptions.hasTarget) {
                object += ", \"target\": {\"name\": ";
                AppendJsonString(object, Utf8ToWide(levelOptions.target.name));
                object += std::string(", \"pass\": ") + (misses.empty() ? "true" : "false") + ", \"misses\": [";
                for (std::size_t m = 0; m < misses.size(); ++m)
                    object += (m ? ", " : "") + TargetMissJson(misses[m]);
                object += "]}";
            }
        } else if (!measured) {
            object += ", \"error\": ";
            AppendJsonString(object, Utf8ToWide(problem));
        }
        sink.Put(object + (md5Part.empty() ? "" : ", " + md5Part) + "}");
    } else {
        std::string text = levels ? FormatLevelsText(report, warnings) : measured ? "" : "(" + problem + ")\n";
        if (levels && levelOptions.hasTarget) {
            if (misses.empty())
                text += "target " + levelOptions.target.name + ": pass\n";
            for (const TargetMiss& miss : misses)
                text += "target " + levelOptions.target.name + ": " + miss.text + "\n";
        }
        sink.Put(text + md5Part);
    }
    return sound;
}

// Each file's listing or levels as it is made: in JSON one element of the
// array for each file. On a terminal each goes out once it is whole.
int RunEachFile(RunMode mode, bool json, FileSources& sources, const LevelOptions& levelOptions)
{
    ConsoleSink sink(json ? ConsoleSink::Bytes::Exact : ConsoleSink::Bytes::Text);
    const bool flushEachFile = platform::IsStandardOutputTerminal();
    const bool several = sources.LookAhead(2) > 1;
    bool allWell = true;
    if (json)
        sink.Put("[");
    SourcePath source;
    std::size_t count = 0;
    for (; sources.Next(source); ++count) {
        if (json)
            sink.Put(count == 0 ? "\n  " : ",\n  ");
        else if (several)
            sink.Put("== " + WideToPathUtf8(source.path.View()) + "\n");
        if (mode == RunMode::Chunks)
            allWell = ListChunks(source.path, json, sink) && allWell;
        else if (mode == RunMode::Info)
            allWell = PrintInfo(source.path, json, sink) && allWell;
        else
            allWell = MeasureFile(source.path, json, levelOptions, sink) && allWell;
        if (flushEachFile)
            sink.Flush();
    }
    if (json)
        sink.Put(count == 0 ? "]\n" : "\n]\n");
    return allWell ? 0 : 1;
}

int RunTidy(bool json, const WideString& output, const WideString& input, bool storeMd5)
{
    std::vector<std::string> changes;
    std::string problem;
    FileLayout layout(input, kTidyReading);
    const bool written = MakeTidyCopy(layout, output, changes, problem, storeMd5);
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

// The check of every path, several at once, printed in order.
int RunCheckMode(const CommandLine& line, FileSources& sources)
{
    ConsoleSink sink(line.format == OutputFormat::Text ? ConsoleSink::Bytes::Text : ConsoleSink::Bytes::Exact);
    CheckRunOptions run;
    run.format = line.format;
    run.jobs = line.jobs;
    run.strict = line.strict;
    run.policy = line.policy ? &*line.policy : nullptr;
    run.flushEachFile = line.format == OutputFormat::JsonLines || platform::IsStandardOutputTerminal();
    return RunChecks(sources, run, sink);
}

} // namespace

int ConsoleMain(const std::vector<std::u16string>& arguments)
{
    CommandLine line;
    if (const std::optional<int> status = ReadCommandLine(arguments, line))
        return *status;
    const bool json = line.format == OutputFormat::Json;
    if (line.mode == RunMode::Tidy)
        return RunTidy(json, line.tidyOutput, line.paths[0], line.tidyMd5);

    FileSources sources(std::move(line.paths), SourceOptions{line.nulSeparated});
    const int status = line.mode == RunMode::Check ? RunCheckMode(line, sources)
                                                   : RunEachFile(line.mode, json, sources, line.levelOptions);
    for (const std::string& message : sources.NothingFound())
        platform::WriteToStandardError(WithLineEnd(message + "\n", platform::kLineEnd));
    return sources.NothingFound().empty() ? status : 1;
}
