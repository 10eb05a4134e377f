#include "cli/FileSources.h"

#include "base/Utf8.h"
#include "cli/FolderWalk.h"
#include "platform/Console.h"
#include "platform/FileSystem.h"
#include "platform/Folder.h"

#include <algorithm>

// The paths on standard input as they come: each line without its line end
// (LF or CR LF), or each path ended by a zero byte. A byte order mark at
// the very start, as editors save lists, is skipped.
class FileSources::InputLines {
public:
    explicit InputLines(bool nulSeparated) : nulSeparated(nulSeparated) {}

    // The next line, read as far as it takes; false at the end of standard
    // input, or when it fails (then Whole is false).
    bool Next(std::u16string& line)
    {
        for (;;) {
            const std::size_t end = first ? std::string::npos : pending.find(nulSeparated ? '\0' : '\n', start);
            if (end != std::string::npos) {
                std::string_view text(pending.data() + start, end - start);
                start = end + 1;
                if (!nulSeparated && !text.empty() && text.back() == '\r')
                    text.remove_suffix(1);
                line = platform::StandardInputToWide(text);
                return true;
            }
            if (ended) {
                if (start == pending.size())
                    return false;
                line = platform::StandardInputToWide(std::string_view(pending).substr(start));
                start = pending.size();
                return true;
            }
            ReadMore();
        }
    }

    bool Whole() const { return whole; }

private:
    void ReadMore()
    {
        pending.erase(0, start);
        start = 0;
        const std::int64_t got = platform::ReadFromStandardInput(buffer.data(), static_cast<std::uint32_t>(buffer.size()));
        if (got > 0)
            pending.append(buffer.data(), static_cast<std::size_t>(got));
        if (first && (pending.size() >= 3 || got <= 0)) {
            if (pending.rfind("\xEF\xBB\xBF", 0) == 0)
                pending.erase(0, 3);
            first = false;
        }
        if (got <= 0) {
            ended = true;
            whole = got == 0;
        }
    }

    bool nulSeparated;
    std::string pending;   // read and not yet given from start on
    std::size_t start = 0;
    bool first = true;     // the byte order mark is still to be looked for
    bool ended = false;
    bool whole = false;
    std::vector<char> buffer = std::vector<char>(65536);
};

namespace {

bool IsFolder(std::u16string_view path)
{
    const std::uint32_t attributes = platform::GetPathAttributes(path);
    return attributes != platform::kInvalidFileAttributes && (attributes & platform::kFileAttributeDirectory);
}

// The separator a path is written with: the last one in it, else the
// system's.
char16_t SeparatorOf(std::u16string_view path)
{
    const std::size_t last = path.find_last_of(u"/\\");
    if (last != std::u16string_view::npos && (path[last] == u'/' || platform::kPathSeparator == u'\\'))
        return path[last];
    return platform::kPathSeparator;
}

} // namespace

FileSources::FileSources(std::vector<WideString> arguments, const SourceOptions& options)
    : arguments(std::move(arguments)), options(options)
{
}

FileSources::~FileSources() = default;

// The next path in order; false when there is none left. The one behind
// it is found first, so that SeenEnd tells whether this one was the last.
bool FileSources::Next(SourcePath& path)
{
    LookAhead(2);
    if (ahead.empty())
        return false;
    path = std::move(ahead.front());
    ahead.pop_front();
    return true;
}

// Finds up to count paths ahead of Next, and tells how many there are: the
// run looks ahead to know whether it has more than one path, and how many
// checks to start.
std::size_t FileSources::LookAhead(std::size_t count)
{
    while (ahead.size() < count && Advance()) {
    }
    return std::min(ahead.size(), count);
}

// Walks on until one more path is ahead; false at the end of the last
// argument.
bool FileSources::Advance()
{
    const std::size_t before = ahead.size();
    while (ahead.size() == before) {
        std::u16string line;
        if (folder) {
            SourcePath path;
            if (folder->Next(path))
                Give(std::move(path));
            else
                folder.reset();
        } else if (input) {
            if (!input->Next(line))
                EndArgument();
            else if (!line.empty())
                StartPath(line);
        } else if (nextMatch < matches.size()) {
            StartPath(matches[nextMatch++]);
        } else if (walking != Walking::Nothing) {
            EndArgument();
        } else if (nextArgument < arguments.size()) {
            StartArgument(std::u16string(arguments[nextArgument++].View()));
        } else {
            ended = true;
            return false;
        }
    }
    return true;
}

void FileSources::StartArgument(const std::u16string& text)
{
    argument = text;
    given = 0;
    if (text == u"-") {
        walking = Walking::StandardInput;
        input = std::make_unique<InputLines>(options.nulSeparated);
    } else if (platform::GetPathAttributes(text) == platform::kInvalidFileAttributes &&
               platform::ExpandWildcards(text, matches)) {
        walking = Walking::Pattern;
        nextMatch = 0;
    } else {
        walking = Walking::Path;
        StartPath(text);
    }
}

void FileSources::StartPath(const std::u16string& path)
{
    if (IsFolder(path))
        folder = std::make_unique<FolderWalk>(path, SeparatorOf(path));
    else
        Give({WideString(path), ""});
}

void FileSources::Give(SourcePath path)
{
    ahead.push_back(std::move(path));
    ++given;
}

// An argument walked to its end: said in nothingFound when it gave nothing.
void FileSources::EndArgument()
{
    if (walking == Walking::StandardInput) {
        if (!input->Whole())
            nothingFound.push_back("sondara-check: standard input can't be read to its end");
        else if (given == 0)
            nothingFound.push_back("sondara-check: no path on standard input");
    } else if (walking == Walking::Path && given == 0) {
        nothingFound.push_back("sondara-check: no .wav file in " + WideToPathUtf8(argument));
    }
    input.reset();
    matches.clear();
    nextMatch = 0;
    walking = Walking::Nothing;
}
