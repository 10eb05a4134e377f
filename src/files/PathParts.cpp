#include "files/PathParts.h"

#include "platform/FileSystem.h"

namespace {

// Room of each part, its terminating zero included, as the path splitter of
// the system gives it.
constexpr std::size_t kDriveRoom = 3;
constexpr std::size_t kPartRoom = 256;
constexpr std::size_t kProgramPathRoom = 1024;
constexpr std::size_t kCurrentDirRoom = 260;

bool IsSeparator(char16_t unit)
{
    return unit == u'\\' || unit == u'/';
}

} // namespace

PathParts::PathParts(const WideString& givenPath)
{
    WideString path = givenPath.IsEmpty() ? WideString(platform::GetProgramPath(kProgramPathRoom)) : givenPath;
    std::u16string_view rest = path.View();

    std::u16string_view driveText;
    if (rest.size() >= 2 && rest[1] == u':') {
        driveText = rest.substr(0, 2);
        rest.remove_prefix(2);
    }
    std::size_t lastSeparator = rest.find_last_of(u"\\/");
    std::u16string_view dirText = lastSeparator == std::u16string_view::npos ? std::u16string_view()
                                                                              : rest.substr(0, lastSeparator + 1);
    rest.remove_prefix(dirText.size());
    std::size_t lastPoint = rest.rfind(u'.');
    std::u16string_view extText = lastPoint == std::u16string_view::npos ? std::u16string_view() : rest.substr(lastPoint);
    std::u16string_view nameText = rest.substr(0, rest.size() - extText.size());

    // A part too long for its room makes all four empty.
    if (driveText.size() >= kDriveRoom || dirText.size() >= kPartRoom || nameText.size() >= kPartRoom ||
        extText.size() >= kPartRoom)
        return;
    drive = WideString(driveText);
    dir = WideString(dirText);
    name = WideString(nameText);
    ext = WideString(extText);
}

// Compares without regard to case, with or without the leading point.
bool PathParts::HasExt(const WideString& wanted) const
{
    if (wanted.IsEmpty())
        return false;
    WideString lowered = wanted.ToLowerAscii();
    if (lowered.At(0) != u'.')
        lowered = WideString(u".") + lowered;
    return lowered == ext.ToLowerAscii();
}

WideString GetFullPath(const WideString& path)
{
    return WideString(platform::GetFullPath(path.View()));
}

WideString RemoveTrailingBackslash(const WideString& path)
{
    if (path.IsEmpty() || !IsSeparator(path.At(path.Length() - 1)))
        return path;
    return path.Substring(0, path.Length() - 1);
}

WideString AddTrailingBackslash(const WideString& path)
{
    if (path.IsEmpty() || IsSeparator(path.At(path.Length() - 1)))
        return path;
    WideString result = path;
    result += platform::kPathSeparator;
    return result;
}

WideString GetParentDir(const WideString& path)
{
    return PathParts(RemoveTrailingBackslash(path)).GetDriveDir();
}

WideString GetCurrentDir()
{
    return WideString(platform::QueryCurrentDirectory(kCurrentDirRoom));
}
