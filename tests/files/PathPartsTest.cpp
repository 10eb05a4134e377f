#include "files/PathParts.h"
#include "platform/FileSystem.h"

#include <gtest/gtest.h>

// The parts of a path, and none where one of them is too long; an empty
// path names the program. HasExt ignores case and the point.
TEST(PathParts, CutsDriveDirNameExt)
{
    struct Case {
        const char16_t* path;
        const char16_t *drive, *dir, *name, *ext;
    } cases[] = {
        {u"C:\\music\\take.one.wav", u"C:", u"\\music\\", u"take.one", u".wav"},
        {u"take.wav", u"", u"", u"take", u".wav"},
        {u"/home/u/a", u"", u"/home/u/", u"a", u""},
        {u"C:", u"C:", u"", u"", u""},
        {u"dir.x\\name", u"", u"dir.x\\", u"name", u""},
        {u".hidden", u"", u"", u"", u".hidden"},
        {u"a/b\\c.d", u"", u"a/b\\", u"c", u".d"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(WideString(c.path).Length());
        PathParts parts{WideString(c.path)};
        EXPECT_EQ(parts.GetDrive(), c.drive);
        EXPECT_EQ(parts.GetDir(), c.dir);
        EXPECT_EQ(parts.GetName(), c.name);
        EXPECT_EQ(parts.GetExt(), c.ext);
        EXPECT_EQ(parts.GetWhole(), c.path);
    }
    PathParts parts{WideString(u"C:\\a\\b.c")};
    EXPECT_EQ(parts.GetDriveDir(), u"C:\\a\\");
    EXPECT_EQ(parts.GetDriveDirName(), u"C:\\a\\b");
    EXPECT_EQ(parts.GetNameExt(), u"b.c");

    WideString longName(std::u16string(255, u'n'));
    PathParts fits(WideString(u"d\\") + longName);
    EXPECT_EQ(fits.GetName(), longName);
    PathParts tooLong(WideString(u"d\\") + longName + u"n.wav");
    EXPECT_TRUE(tooLong.GetDir().IsEmpty());
    EXPECT_TRUE(tooLong.GetName().IsEmpty());
    EXPECT_TRUE(tooLong.GetExt().IsEmpty());
    PathParts program{WideString()};
    EXPECT_FALSE(program.GetName().IsEmpty());
    EXPECT_FALSE(program.GetDir().IsEmpty());

    PathParts wav{WideString(u"a.Wav")};
    EXPECT_TRUE(wav.HasExt(u"wav"));
    EXPECT_TRUE(wav.HasExt(u".WAV"));
    EXPECT_FALSE(wav.HasExt(u""));
    EXPECT_FALSE(wav.HasExt(u"wa"));
    PathParts none{WideString(u"a")};
    EXPECT_FALSE(none.HasExt(u"wav"));
    EXPECT_FALSE(none.HasExt(u".WAV"));
}

TEST(PathHelpers, TrailingSeparators)
{
    const WideString separator(&platform::kPathSeparator, 1);
    EXPECT_EQ(RemoveTrailingBackslash(u"C:\\a\\"), u"C:\\a");
    EXPECT_EQ(RemoveTrailingBackslash(u"C:\\a"), u"C:\\a");
    EXPECT_EQ(RemoveTrailingBackslash(u""), u"");
    EXPECT_EQ(AddTrailingBackslash(u"dir"), WideString(u"dir") + separator);
    EXPECT_EQ(AddTrailingBackslash(u"dir\\"), u"dir\\");
    EXPECT_EQ(AddTrailingBackslash(u""), u"");
    EXPECT_EQ(GetParentDir(u"C:\\a\\b\\"), u"C:\\a\\");
    EXPECT_EQ(GetParentDir(u"C:\\a\\b"), u"C:\\a\\");
    EXPECT_FALSE(GetCurrentDir().IsEmpty());
    EXPECT_FALSE(GetFullPath(u"x.wav").IsEmpty());
    EXPECT_TRUE(GetFullPath(u"x.wav").EndsWith(u"x.wav"));
}
