#include "cli/FileSources.h"

#include "base/Utf8.h"
#include "platform/Console.h"
#include "platform/FileSystem.h"
#include "platform/Folder.h"

#include <algorithm>

namespace {

bool EndsWithWav(const std::u16string& name)
{
    if (name.size() < 4)
        return false;
    std::u16string ending = name.substr(name.size() - 4);
    for (char16_t& unit : ending) {
        if (unit >= u'A' && unit <= u'Z')
            unit = static_cast<char16_t>(unit - u'A' + u'a');
    }
    return ending == u".wav";
}

bool IsFolder(std::u16string_view path)
{
    const std::uint32_t attributes = platform::GetPathAttributes(path);
    return attributes != platform::kInvalidFileAttributes && (attributes & platform::kFileAttributeDirectory);
}

class FolderWalk {
public:
    explicit FolderWalk(std::vector<SourcePath>& paths) : paths(paths) {}

    void Walk(const std::u16string& folder, char16_t separator)
    {
        platform::FolderIdentity identity;
        if (!platform::GetFolderIdentity(folder, identity)) {
            Add(folder, "folder.unreadable");
            return;
        }
        // A link back to a folder on the way down would lead round for ever.
        if (std::find(above.begin(), above.end(), identity) != above.end()) {
            Add(folder, "folder.link-loop");
            return;
        }
        std::vector<platform::FolderEntry> entries;
        if (!platform::ListFolder(folder, entries)) {
            Add(folder, "folder.unreadable");
            return;
        }
        std::sort(entries.begin(), entries.end(),
                  [](const platform::FolderEntry& a, const platform::FolderEntry& b) { return a.name < b.name; });
        above.push_back(identity);
        const std::u16string prefix =
            folder.empty() || folder.back() == u'/' || folder.back() == u'\\' ? folder : folder + separator;
        for (const platform::FolderEntry& entry : entries) {
            const std::u16string path = prefix + entry.name;
            switch (entry.kind) {
            case platform::EntryKind::Folder: Walk(path, separator); break;
            case platform::EntryKind::File:
                if (EndsWithWav(entry.name))
                    Add(path, "");
                break;
            case platform::EntryKind::Broken:
                if (EndsWithWav(entry.name))
                    Add(path, "file.broken-link");
                break;
            case platform::EntryKind::Other: break;
            }
        }
        above.pop_back();
    }

private:
    void Add(const std::u16string& path, const char* unreadable)
    {
        paths.push_back({WideString(path), unreadable});
    }

    std::vector<SourcePath>& paths;
    std::vector<platform::FolderIdentity> above;
};

// Calls line with each line of standard input, without its line end
// (LF or CR LF), or with each path ended by a zero byte. A byte order mark
// at the very start, as editors save lists, is skipped. False when
// standard input failed before its end.
template <typename LineUse>
bool ForEachInputLine(bool nulSeparated, LineUse line)
{
    const char separator = nulSeparated ? '\0' : '\n';
    std::string pending;
    char buffer[65536];
    bool first = true;
    for (;;) {
        const std::int64_t got = platform::ReadFromStandardInput(buffer, sizeof buffer);
        if (got > 0)
            pending.append(buffer, static_cast<std::size_t>(got));
        if (first && (pending.size() >= 3 || got <= 0)) {
            if (pending.rfind("\xEF\xBB\xBF", 0) == 0)
                pending.erase(0, 3);
            first = false;
        }
        std::size_t start = 0;
        for (std::size_t end; !first && (end = pending.find(separator, start)) != std::string::npos; start = end + 1) {
            std::string_view text(pending.data() + start, end - start);
            if (!nulSeparated && !text.empty() && text.back() == '\r')
                text.remove_suffix(1);
            line(platform::StandardInputToWide(text));
        }
        pending.erase(0, start);
        if (got <= 0) {
            if (!pending.empty())
                line(platform::StandardInputToWide(pending));
            return got == 0;
        }
    }
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

void AddPath(const std::u16string& path, std::vector<SourcePath>& paths)
{
    if (IsFolder(path))
        FolderWalk(paths).Walk(path, SeparatorOf(path));
    else
        paths.push_back({WideString(path), ""});
}

} // namespace

void ExpandSources(const std::vector<WideString>& arguments, const SourceOptions& options,
                   std::vector<SourcePath>& paths, std::vector<std::string>& nothingFound)
{
    for (const WideString& argument : arguments) {
        const std::u16string text(argument.View());
        const std::size_t before = paths.size();
        if (text == u"-") {
            const bool whole = ForEachInputLine(options.nulSeparated, [&](const std::u16string& line) {
                if (!line.empty())
                    AddPath(line, paths);
            });
            if (!whole)
                nothingFound.push_back("sondara-check: standard input can't be read to its end");
            else if (paths.size() == before)
                nothingFound.push_back("sondara-check: no path on standard input");
            continue;
        }
        std::vector<std::u16string> matches;
        if (platform::GetPathAttributes(text) == platform::kInvalidFileAttributes &&
            platform::ExpandWildcards(text, matches)) {
            for (const std::u16string& match : matches)
                AddPath(match, paths);
            continue;
        }
        AddPath(text, paths);
        if (paths.size() == before)
            nothingFound.push_back("sondara-check: no .wav file in " + WideToPathUtf8(text));
    }
}
