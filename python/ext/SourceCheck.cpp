#include "SourceCheck.h"

#include "base/TextFormat.h"
#include "check/FileCheck.h"
#include "cli/CheckPrinter.h"
#include "cli/LevelWarnings.h"
#include "cli/LevelsPrinter.h"
#include "measure/FormatFacts.h"
#include "measure/Levels.h"
#include "platform/posix/Utf8Path.h"

#include <filesystem>
#include <memory>
#include <new>

namespace {

class OutcomeSink : public TextSink {
public:
    void Put(std::string_view piece) override { text += piece; }
    std::string text;
};

std::unique_ptr<FileLayout> OpenLayout(const CheckSource& source, const LayoutReading& reading)
{
    return source.inMemory ? std::make_unique<FileLayout>(source.bytes, source.path, reading)
                           : std::make_unique<FileLayout>(source.path, reading);
}

// Why a layout holds no file to read; Done when it holds one.
SourceState StateOf(const FileLayout& layout)
{
    if (!layout.IsExistingFile()) {
        std::error_code error;
        const bool folder =
            std::filesystem::is_directory(platform::posix::PathToBytes(layout.GetPath().View()), error);
        return folder ? SourceState::Folder : SourceState::Missing;
    }
    return layout.IsOpen() ? SourceState::Done : SourceState::Unreadable;
}

// A check that runs out of memory fails this source, not the process.
template <typename Work>
SourceOutcome Guarded(Work work)
{
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return {SourceState::Failed, "out of memory"};
    } catch (const std::exception& error) {
        return {SourceState::Failed, error.what()};
    }
}

} // namespace

SourceOutcome CheckSourceAsJson(const CheckSource& source)
{
    return Guarded([&] {
        // Read as the checker reads it, for the header facts.
        const std::unique_ptr<FileLayout> layout = OpenLayout(source, kLevelsReading);
        FileCheck check;
        CheckFile(*layout, check);
        SourceOutcome outcome{StateOf(*layout), {}};
        if (outcome.state != SourceState::Done || check.unreadable)
            return SourceOutcome{outcome.state == SourceState::Done ? SourceState::Unreadable : outcome.state, {}};
        OutcomeSink sink;
        const std::unique_ptr<CheckPrinter> printer = MakeCheckPrinter(OutputFormat::Json, sink, false);
        printer->Begin();
        printer->File(check, ReadFormatFacts(*layout), nullptr);
        printer->End(RunSummary());
        outcome.text = std::move(sink.text);
        return outcome;
    });
}

// The object of one file as the checker's MeasureFile makes it with
// --levels alone: the figures and the audio's warnings, or the reason.
SourceOutcome MeasureSourceAsJson(const CheckSource& source, bool loudness)
{
    return Guarded([&] {
        const std::unique_ptr<FileLayout> layout = OpenLayout(source, kLevelsReading);
        SourceOutcome outcome{StateOf(*layout), {}};
        if (outcome.state != SourceState::Done)
            return outcome;
        LevelReport report;
        std::string problem;
        if (!MeasureLevels(*layout, report, problem, loudness))
            return SourceOutcome{SourceState::NotMeasured, problem};
        outcome.text = "[{\"path\": ";
        AppendJsonString(outcome.text, source.path.View());
        outcome.text += ", " + FormatLevelsJson(report, FindLevelWarnings(report)) + "}]";
        return outcome;
    });
}
