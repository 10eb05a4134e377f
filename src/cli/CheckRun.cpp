#include "cli/CheckRun.h"

#include "base/TextFormat.h"
#include "platform/Console.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace {

// The checks run on threads of the language's library: the checker needs
// nothing of them but to start, wait and lock, the same on every system.
class OrderedChecks {
public:
    OrderedChecks(const std::vector<SourcePath>& paths, unsigned jobs)
        : paths(paths), window(jobs * 8), results(window)
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

    // The result of the next path in order, once it is there.
    FileCheck Take()
    {
        std::unique_lock<std::mutex> hold(lock);
        std::optional<FileCheck>& slot = results[taken % window];
        changed.wait(hold, [&] { return slot.has_value(); });
        FileCheck check = std::move(*slot);
        slot.reset();
        ++taken;
        changed.notify_all();
        return check;
    }

private:
    void Work()
    {
        for (;;) {
            std::size_t index;
            {
                std::unique_lock<std::mutex> hold(lock);
                changed.wait(hold, [&] { return stopping || next >= paths.size() || next < taken + window; });
                if (stopping || next >= paths.size())
                    return;
                index = next++;
            }
            FileCheck check;
            if (paths[index].unreadable.empty())
                CheckFile(paths[index].path, check);
            else
                check.path = paths[index].path;
            {
                std::lock_guard<std::mutex> hold(lock);
                results[index % window] = std::move(check);
            }
            changed.notify_all();
        }
    }

    const std::vector<SourcePath>& paths;
    const std::size_t window;
    std::vector<std::optional<FileCheck>> results;
    std::vector<std::thread> workers;
    std::mutex lock;
    std::condition_variable changed;
    std::size_t next = 0;
    std::size_t taken = 0;
    bool stopping = false;
};

// "checked 1,234 of 10,000 files" on standard error, rewritten in place,
// once the run has taken a second and at most ten times a second after;
// only where a person watches the terminal. Results written to the same
// terminal go between a Hide and the next Done, so that no line of theirs
// runs into the progress line.
class Progress {
public:
    explicit Progress(std::size_t total) : total(total), shown(platform::IsStandardErrorTerminal()) {}
    ~Progress() { Hide(); }

    void Done(std::size_t count)
    {
        if (!shown)
            return;
        const auto now = std::chrono::steady_clock::now();
        const bool due = now - start >= std::chrono::seconds(1) && now - last >= std::chrono::milliseconds(100);
        if (!due && !hidden)
            return;
        if (due || !text.empty())
            text = "\rchecked " + FormatCount(static_cast<std::int64_t>(count)) + " of " +
                   FormatCount(static_cast<std::int64_t>(total)) + " files";
        if (text.empty())
            return;
        last = now;
        drawn = true;
        hidden = false;
        platform::WriteToStandardError(text);
    }
    void Hide()
    {
        if (!drawn)
            return;
        platform::WriteToStandardError("\r\x1b[K");
        drawn = false;
        hidden = true;
    }

private:
    std::size_t total;
    bool shown;
    bool drawn = false;
    bool hidden = false; // cleared for results, to be drawn again
    std::string text;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point last;
};

} // namespace

int RunChecks(const std::vector<SourcePath>& paths, const CheckRunOptions& options, TextSink& sink)
{
    unsigned jobs = options.jobs;
    if (jobs == 0)
        jobs = std::max(1u, std::thread::hardware_concurrency());
    if (jobs > paths.size())
        jobs = static_cast<unsigned>(std::max<std::size_t>(1, paths.size()));

    const std::unique_ptr<CheckPrinter> printer = MakeCheckPrinter(options.format, sink, paths.size() > 1);
    RunSummary summary;
    bool failed = false;
    printer->Begin();
    {
        OrderedChecks checks(paths, jobs);
        Progress progress(paths.size());
        for (std::size_t i = 0; i < paths.size(); ++i) {
            const FileCheck check = checks.Take();
            if (options.flushEachFile)
                progress.Hide();
            if (!paths[i].unreadable.empty()) {
                summary.CountUnreadable();
                printer->Unreadable(paths[i].path, paths[i].unreadable);
                failed = true;
            } else {
                summary.Count(check);
                printer->File(check);
                failed = failed || check.unreadable || check.hasError || (options.strict && check.HasWarnings());
            }
            if (options.flushEachFile)
                sink.Flush();
            progress.Done(i + 1);
        }
    }
    printer->End(summary);
    // JSON and CSV have no place for the summary; a person at the terminal
    // still reads it.
    const bool machineFormat = options.format == OutputFormat::Json || options.format == OutputFormat::Csv;
    if (machineFormat && paths.size() > 1 && platform::IsStandardErrorTerminal())
        platform::WriteToStandardError(FormatSummary(summary));
    return failed ? 1 : 0;
}
