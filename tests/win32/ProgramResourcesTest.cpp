// The resources compiled into Sondara.exe, read back the way the system
// and the program read them.
#include "ProgramProcess.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

// Sondara.exe loaded for its resources only.
class ProgramResources : public ::testing::Test {
protected:
    void SetUp() override
    {
        module = LoadLibraryExW(ProgramProcess::ProgramPath().c_str(), nullptr,
                                LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
        ASSERT_NE(module, nullptr);
    }
    void TearDown() override
    {
        if (module != nullptr)
            FreeLibrary(module);
    }

    std::vector<unsigned char> Resource(LPCWSTR type, LPCWSTR name) const
    {
        HRSRC resource = FindResourceW(module, name, type);
        if (resource == nullptr)
            return {};
        HGLOBAL loaded = LoadResource(module, resource);
        auto* bytes = static_cast<const unsigned char*>(LockResource(loaded));
        return std::vector<unsigned char>(bytes, bytes + SizeofResource(module, resource));
    }

    HMODULE module = nullptr;
};

// Reads the little-endian fields of a resource in order.
class Reader {
public:
    explicit Reader(const std::vector<unsigned char>& bytes) : bytes(bytes) {}
    unsigned Word()
    {
        unsigned value = bytes.at(at) | (bytes.at(at + 1) << 8);
        at += 2;
        return value;
    }
    unsigned long Dword()
    {
        unsigned long low = Word();
        return low | (static_cast<unsigned long>(Word()) << 16);
    }
    unsigned Byte() { return bytes.at(at++); }
    std::wstring Text()
    {
        std::wstring text;
        for (unsigned unit = Word(); unit != 0; unit = Word())
            text += static_cast<wchar_t>(unit);
        return text;
    }
    std::size_t Left() const { return bytes.size() - at; }

private:
    const std::vector<unsigned char>& bytes;
    std::size_t at = 0;
};

} // namespace

// The style, caption and size show on the running window; the font, which
// sets the size of a dialog unit, only here.
TEST_F(ProgramResources, DialogTemplateIsTheExtendedFormInTheShellFont)
{
    std::vector<unsigned char> bytes = Resource(MAKEINTRESOURCEW(5), MAKEINTRESOURCEW(129));
    ASSERT_FALSE(bytes.empty());
    Reader read(bytes);
    EXPECT_EQ(read.Word(), 1u);      // version
    EXPECT_EQ(read.Word(), 0xFFFFu); // signature of the extended form
    for (int skipped = 0; skipped < 3; ++skipped)
        read.Dword();                // help id, extended style, style
    for (int skipped = 0; skipped < 5; ++skipped)
        read.Word();                 // controls, x, y, width, height
    EXPECT_EQ(read.Word(), 0u);      // no menu
    EXPECT_EQ(read.Word(), 0u);      // the system's dialog class
    EXPECT_EQ(read.Text(), L"Sondara");
    EXPECT_EQ(read.Word(), 8u);      // points
    read.Word();                     // weight
    read.Byte();                     // italic
    read.Byte();                     // character set
    EXPECT_EQ(read.Text(), L"MS Shell Dlg");
}

TEST_F(ProgramResources, ManifestAsksForCommonControlsSixOfTheBuildsProcessor)
{
    std::vector<unsigned char> bytes = Resource(MAKEINTRESOURCEW(24), MAKEINTRESOURCEW(1));
    ASSERT_FALSE(bytes.empty());
    std::string manifest(bytes.begin(), bytes.end());
    const char* architecture =
        sizeof(void*) == 8 ? "processorArchitecture=\"amd64\"" : "processorArchitecture=\"x86\"";
    for (const char* part : {"level=\"asInvoker\"", "uiAccess=\"false\"",
                             "name=\"Microsoft.Windows.Common-Controls\"", "version=\"6.0.0.0\"", architecture}) {
        EXPECT_NE(manifest.find(part), std::string::npos) << part;
    }
}

TEST_F(ProgramResources, VersionBlockAsTheReleaseNoteReadsIt)
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
