#include "cli/FolderWalk.h"

#include "cli/FileSources.h"

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

// Folders, and the files and broken links that the walk gives.
bool CanGivePath(const platform::FolderEntry& entry)
{
    switch (entry.kind) {
    case platform::EntryKind::Folder: return true;
    case platform::EntryKind::File:
    case platform::EntryKind::Broken: return EndsWithWav(entry.name);
    case platform::EntryKind::Other: return false;
    }
    return false;
}

} // namespace

FolderWalk::FolderWalk(std::u16string folder, char16_t separator) : first(std::move(folder)), separator(separator)
{
}

// The next path of the walk: a file to check, or a folder that can't be
// read, a link back to a folder above or a link to nothing, with its code.
// False when the walk is over.
bool FolderWalk::Next(SourcePath& path)
{
    if (!started) {
        started = true;
        if (!Enter(first, path))
            return true;
    }
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.entries.size()) {
            levels.pop_back();
            continue;
        }
        const platform::FolderEntry& entry = level.entries[level.next++];
        std::u16string entryPath = level.prefix + entry.name;
        switch (entry.kind) {
        case platform::EntryKind::Folder:
            if (!Enter(entryPath, path))
                return true;
            break;
        case platform::EntryKind::Broken: path = {WideString(entryPath), "file.broken-link"}; return true;
        default: path = {WideString(entryPath), ""}; return true;
        }
    }
    return false;
}

// Lists a folder onto the way down; false when it can't be read or leads
// back to a folder above it, with the path to say so in instead.
bool FolderWalk::Enter(const std::u16string& folder, SourcePath& instead)
{
    Level level;
    if (!platform::GetFolderIdentity(folder, level.identity)) {
        instead = {WideString(folder), "folder.unreadable"};
        return false;
    }
    // A link back to a folder on the way down would lead round for ever.
    if (std::any_of(levels.begin(), levels.end(), [&](const Level& above) { return above.identity == level.identity; })) {
        instead = {WideString(folder), "folder.link-loop"};
        return false;
    }
    if (!platform::ListFolder(folder, level.entries)) {
        instead = {WideString(folder), "folder.unreadable"};
        return false;
    }
    std::erase_if(level.entries, [](const platform::FolderEntry& entry) { return !CanGivePath(entry); });
    std::sort(level.entries.begin(), level.entries.end(),
              [](const platform::FolderEntry& a, const platform::FolderEntry& b) { return a.name < b.name; });
    level.entries.shrink_to_fit();
    level.prefix = folder.empty() || folder.back() == u'/' || folder.back() == u'\\' ? folder : folder + separator;
    levels.push_back(std::move(level));
    return true;
}
