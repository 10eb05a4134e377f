// The resources compiled into Sondara.exe, read back the way the system
// and the program read them.
#include "ProgramProcess.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

// The style, caption and size show on the running window; the font, which
// sets the size of a dialog unit, only here. The template's fields are
// little-endian words: the extended form's version and signature, three
// double words and five words that the window shows, no menu, the system's
// dialog class, the caption, 8 points, weight, italic flag and character
// set, and the face.
TEST(ProgramResources, DialogTemplateIsTheExtendedFormInTheShellFont)
{
    const std::vector<unsigned char> bytes = ProgramProcess::Resource(MAKEINTRESOURCEW(5), MAKEINTRESOURCEW(129));
    std::u16string words(bytes.size() / 2, u'\0');
    std::memcpy(words.data(), bytes.data(), words.size() * 2);
    ASSERT_GE(words.size(), 39u);
    EXPECT_EQ(words.substr(0, 2), u"\x0001\xFFFF");
    EXPECT_EQ(words.substr(13, 11), std::u16string(u"\0\0Sondara\0\x0008", 11));
    EXPECT_EQ(words.substr(26, 13), std::u16string(u"MS Shell Dlg\0", 13));
}

TEST(ProgramResources, ManifestAsksForCommonControlsSixOfTheBuildsProcessor)
{
    std::vector<unsigned char> bytes = ProgramProcess::Resource(MAKEINTRESOURCEW(24), MAKEINTRESOURCEW(1));
    ASSERT_FALSE(bytes.empty());
    std::string manifest(bytes.begin(), bytes.end());
    const char* architecture =
        sizeof(void*) == 8 ? "processorArchitecture=\"amd64\"" : "processorArchitecture=\"x86\"";
    for (const char* part : {"level=\"asInvoker\"", "uiAccess=\"false\"",
                             "name=\"Microsoft.Windows.Common-Controls\"", "version=\"6.0.0.0\"", architecture}) {
        EXPECT_NE(manifest.find(part), std::string::npos) << part;
    }
}

TEST(ProgramResources, VersionBlockAsTheReleaseNoteReadsIt)
{
    std::wstring path = ProgramProcess::ProgramPath();
    DWORD ignored = 0;
    DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
    ASSERT_GT(size, 0u);
    std::vector<unsigned char> block(size);
    ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, size, block.data()));

    // The release note's address is made of the product version in the
    // language-neutral table, which the translation names.
    wchar_t* value = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\StringFileInfo\\000004b0\\ProductVersion",
                               reinterpret_cast<void**>(&value), &length));
    EXPECT_STREQ(value, L"1, 0, 0, 1");
    WORD* translation = nullptr;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\VarFileInfo\\Translation", reinterpret_cast<void**>(&translation),
                               &length));
    ASSERT_EQ(length, 4u);
    EXPECT_EQ(translation[0], 0u);
    EXPECT_EQ(translation[1], 0x04B0u);
}
