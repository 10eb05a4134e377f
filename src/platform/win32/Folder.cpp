#include "platform/Folder.h"

#include <algorithm>
#include <windows.h>

namespace platform {

namespace {

std::wstring Wide(std::u16string_view text)
{
    return std::wstring(text.begin(), text.end());
}

std::u16string FromWide(const wchar_t* text)
{
    std::u16string result;
    for (; *text; ++text)
        result += static_cast<char16_t>(*text);
    return result;
}

bool IsDotName(const wchar_t* name)
{
    return (name[0] == L'.' && name[1] == 0) || (name[0] == L'.' && name[1] == L'.' && name[2] == 0);
}

// What a name found by FindFirstFileW leads to. A link (a reparse point) is
// followed by asking for the attributes of its target.
EntryKind KindOf(const std::wstring& fullPath, DWORD attributes)
{
    if (attributes & FILE_ATTRIBUTE_REPARSE_POINT) {
        HANDLE target = CreateFileW(fullPath.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        if (target == INVALID_HANDLE_VALUE)
            return EntryKind::Broken;
        BY_HANDLE_FILE_INFORMATION information;
        const BOOL known = GetFileInformationByHandle(target, &information);
        CloseHandle(target);
        if (!known)
            return EntryKind::Broken;
        attributes = information.dwFileAttributes;
    }
    if (attributes & FILE_ATTRIBUTE_DIRECTORY)
        return EntryKind::Folder;
    if (attributes & FILE_ATTRIBUTE_DEVICE)
        return EntryKind::Other;
    return EntryKind::File;
}

} // namespace

bool ListFolder(std::u16string_view path, std::vector<FolderEntry>& entries)
{
    std::wstring folder = Wide(path);
    if (!folder.empty() && folder.back() != L'\\' && folder.back() != L'/')
        folder += L'\\';
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW((folder + L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_NOT_FOUND;
    do {
        if (IsDotName(found.cFileName))
            continue;
        FolderEntry entry;
        entry.name = FromWide(found.cFileName);
        entry.kind = KindOf(folder + found.cFileName, found.dwFileAttributes);
        entries.push_back(std::move(entry));
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return true;
}

bool GetFolderIdentity(std::u16string_view path, FolderIdentity& identity)
{
    HANDLE folder = CreateFileW(Wide(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (folder == INVALID_HANDLE_VALUE)
        return false;
    BY_HANDLE_FILE_INFORMATION information;
    const BOOL known = GetFileInformationByHandle(folder, &information);
    CloseHandle(folder);
    if (!known)
        return false;
    identity.volume = information.dwVolumeSerialNumber;
    identity.index = (std::uint64_t{information.nFileIndexHigh} << 32) | information.nFileIndexLow;
    return true;
}

// The folder part of the pattern is kept as it was written, with its own
// separator, and each match is put behind it; the matches are sorted by
// their UTF-16 units, as the checker sorts a folder's entries.
bool ExpandWildcards(std::u16string_view pattern, std::vector<std::u16string>& paths)
{
    const std::size_t split = pattern.find_last_of(u"\\/:");
    const std::u16string_view last = split == std::u16string_view::npos ? pattern : pattern.substr(split + 1);
    if (last.find_first_of(u"*?") == std::u16string_view::npos)
        return false;
    const std::u16string folder(split == std::u16string_view::npos ? std::u16string_view() : pattern.substr(0, split + 1));
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW(Wide(pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    std::vector<std::u16string> matches;
    do {
        if (!IsDotName(found.cFileName))
            matches.push_back(folder + FromWide(found.cFileName));
    } while (FindNextFileW(search, &found));
    FindClose(search);
    std::sort(matches.begin(), matches.end());
    paths.insert(paths.end(), matches.begin(), matches.end());
    return !matches.empty();
}

} // namespace platform
