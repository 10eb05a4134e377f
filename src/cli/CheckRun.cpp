#include "cli/CheckRun.h"

#include "base/TextFormat.h"
#include "cli/ProgressLine.h"
#include "measure/Levels.h"
#include "platform/Console.h"
#include "policy/PolicyJudge.h"
#include "wave/FileLayout.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace {

// A path of the run and what its check found.
struct CheckedPath {
    SourcePath source;
    FileCheck check;
    FormatFacts format;
    FileFacts facts; // with a policy only
};

// The checks run on threads of the language's library: the checker needs
// nothing of them but to start, wait and lock, the same on every system.
// Each thread takes the next path from the sources itself, under a lock of
// their own, so that a slow folder or standard input holds up no result
// being handed over.
class OrderedChecks {
public:
    OrderedChecks(FileSources& sources, unsigned jobs, const Policy* policy)
        : sources(sources), policy(policy), window(jobs * 8), results(window)
    {
        for (unsigned i = 0; i < jobs; ++i)
            workers.emplace_back([this] { Work(); });
    }
    ~OrderedChecks()
    {
        {
            std::lock_guard<std::mutex> hold(lock);
            stopping = true;
        }
        changed.notify_all();
        for (std::thread& worker : workers)
            worker.join();
    }

    // The result of the next path in order, once it is there; false when
    // every path has been taken.
    bool Take(CheckedPath& checked)
    {
        std::unique_lock<std::mutex> hold(lock);
        std::optional<CheckedPath>& slot = results[taken % window];
        changed.wait(hold, [&] { return slot.has_value() || (total && taken == *total); });
        if (!slot)
            return false;
        checked = std::move(*slot);
        slot.reset();
        ++taken;
        changed.notify_all();
        return true;
    }

    // The number of paths of the run, once the sources have seen their end.
    std::optional<std::size_t> Total()
    {
        std::lock_guard<std::mutex> hold(lock);
        return total;
    }

private:
    void Work()
    {
        for (;;) {
            // A place in the window first: every path claimed is in it.
            {
                std::unique_lock<std::mutex> hold(lock);
                changed.wait(hold, [&] { return stopping || total || claimed < taken + window; });
                if (stopping || total)
                    return;
                ++claimed;
            }
            CheckedPath checked;
            std::size_t index = 0;
            std::size_t found = 0;
            bool got = false;
            bool seenEnd = false;
            {
                std::lock_guard<std::mutex> hold(sourcesLock);
                got = sources.Next(checked.source);
                if (got)
                    index = pulled++;
                seenEnd = !got || sources.SeenEnd();
                found = pulled;
            }
            if (seenEnd) {
                std::lock_guard<std::mutex> hold(lock);
                total = found;
            }
            if (got) {
                if (checked.source.unreadable.empty()) {
                    // The header facts and a policy read the file's audio
                    // place, an RF64 file's included, from the same layout.
                    FileLayout layout(checked.source.path, kLevelsReading);
                    CheckFile(layout, checked.check);
                    checked.format = ReadFormatFacts(layout);
                    if (policy && !checked.check.unreadable)
                        GatherFacts(layout, policy->Depth(), checked.facts);
                }
                std::lock_guard<std::mutex> hold(lock);
                results[index % window] = std::move(checked);
            }
            changed.notify_all();
            if (!got)
                return;
        }
    }

    FileSources& sources;
    const Policy* policy;
    std::mutex sourcesLock;
    std::size_t pulled = 0; // under sourcesLock: paths taken from the sources

    const std::size_t window;
    std::vector<std::optional<CheckedPath>> results;
    std::vector<std::thread> workers;
    std::mutex lock;
    std::condition_variable changed;
    std::size_t claimed = 0; // places in the window that threads hold
    std::size_t taken = 0;
    std::optional<std::size_t> total;
    bool stopping = false;
};

} // namespace

int RunChecks(FileSources& sources, const CheckRunOptions& options, TextSink& sink)
{
    unsigned jobs = options.jobs;
    if (jobs == 0)
        jobs = std::max(1u, std::thread::hardware_concurrency());
    // No more checks at once than there are paths, and a heading for each
    // file only when there are several.
    jobs = static_cast<unsigned>(std::max<std::size_t>(1, sources.LookAhead(jobs)));
    const bool several = sources.LookAhead(2) > 1;

    const std::unique_ptr<CheckPrinter> printer = MakeCheckPrinter(options.format, sink, several);
    RunSummary summary;
    bool failed = false;
    printer->Begin();
    {
        OrderedChecks checks(sources, jobs, options.policy);
        std::optional<PolicyJudge> judge;
        if (options.policy)
            judge.emplace(*options.policy);
        ProgressLine progress;
        CheckedPath checked;
        for (std::size_t count = 1; checks.Take(checked); ++count) {
            if (options.flushEachFile)
                progress.Hide();
            const SourcePath& source = checked.source;
            if (!source.unreadable.empty()) {
                summary.CountUnreadable();
                printer->Unreadable(source.path, source.unreadable);
                failed = true;
            } else {
                summary.Count(checked.check);
                std::optional<PolicyVerdict> verdict;
                if (judge && !checked.check.unreadable)
                    verdict = judge->Judge(checked.check, checked.facts);
                printer->File(checked.check, checked.format, verdict ? &*verdict : nullptr);
                failed = failed || checked.check.unreadable || checked.check.hasError ||
                         (options.strict && checked.check.HasWarnings());
                if (verdict)
                    failed = failed || verdict->outcome == RuleOutcome::Fail ||
                             (options.strict && verdict->outcome == RuleOutcome::Warn);
            }
            if (options.flushEachFile)
                sink.Flush();
            // Until the sources have seen their end the total is not known.
            progress.Update([&] {
                const std::optional<std::size_t> total = checks.Total();
                return "checked " + FormatCount(static_cast<std::int64_t>(count)) +
                       (total ? " of " + FormatCount(static_cast<std::int64_t>(*total)) : std::string()) + " files";
            });
        }
    }
    printer->End(summary);
    // JSON and CSV have no place for the summary; a person at the terminal
    // still reads it.
    const bool machineFormat = options.format == OutputFormat::Json || options.format == OutputFormat::Csv;
    if (machineFormat && several && platform::IsStandardErrorTerminal())
        platform::WriteToStandardError(FormatSummary(summary));
    return failed ? 1 : 0;
}
