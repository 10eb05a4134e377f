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

BOOL CALLBACK CountName(HMODULE, LPCWSTR, LPWSTR, LONG_PTR count)
{
    ++*reinterpret_cast<int*>(count);
    return TRUE;
}

} // namespace

TEST_F(ProgramResources, DialogTemplateIsTheExtendedFormAsTabled)
{
    std::vector<unsigned char> bytes = Resource(MAKEINTRESOURCEW(5), MAKEINTRESOURCEW(129));
    ASSERT_FALSE(bytes.empty());
    Reader read(bytes);
    EXPECT_EQ(read.Word(), 1u);         // version
    EXPECT_EQ(read.Word(), 0xFFFFu);    // signature of the extended form
    EXPECT_EQ(read.Dword(), 0u);        // help id
    EXPECT_EQ(read.Dword(), 0u);        // extended style
    EXPECT_EQ(read.Dword(), 0x00CA00C8u);
    EXPECT_EQ(read.Word(), 0u);         // controls
    EXPECT_EQ(read.Word(), 0u);         // x
    EXPECT_EQ(read.Word(), 0u);         // y
    EXPECT_EQ(read.Word(), 241u);
    EXPECT_EQ(read.Word(), 145u);
    EXPECT_EQ(read.Word(), 0u);         // no menu
    EXPECT_EQ(read.Word(), 0u);         // the system's dialog class
    EXPECT_EQ(read.Text(), L"Sondara");
    EXPECT_EQ(read.Word(), 8u);         // points
    EXPECT_EQ(read.Word(), 0u);         // weight
    EXPECT_EQ(read.Byte(), 0u);         // not italic
    EXPECT_EQ(read.Byte(), 0u);         // character set
    EXPECT_EQ(read.Text(), L"MS Shell Dlg");

    int dialogs = 0;
    EnumResourceNamesW(module, MAKEINTRESOURCEW(5), CountName, reinterpret_cast<LONG_PTR>(&dialogs));
    EXPECT_EQ(dialogs, 1);
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

    struct Entry {
        const wchar_t* key;
        const wchar_t* value;
    };
    const Entry entries[] = {
        {L"ProductVersion", L"1, 0, 0, 1"},  {L"FileVersion", L"1, 0, 0, 1"},
        {L"ProductName", L"Sondara Module"}, {L"FileDescription", L"Sondara Module"},
        {L"InternalName", L"Sondara"},       {L"OriginalFilename", L"Sondara.exe"},
    };
    for (const Entry& entry : entries) {
        std::wstring query = std::wstring(L"\\StringFileInfo\\000004b0\\") + entry.key;
        wchar_t* value = nullptr;
        UINT length = 0;
        ASSERT_TRUE(VerQueryValueW(block.data(), query.c_str(), reinterpret_cast<void**>(&value), &length))
            << query.size();
        EXPECT_STREQ(value, entry.value);
    }

    WORD* translation = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\VarFileInfo\\Translation", reinterpret_cast<void**>(&translation),
                               &length));
    ASSERT_EQ(length, 4u);
    EXPECT_EQ(translation[0], 0u);
    EXPECT_EQ(translation[1], 0x04B0u);

    VS_FIXEDFILEINFO* fixed = nullptr;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &length));
    EXPECT_EQ(fixed->dwFileVersionMS, 0x00010000u);
    EXPECT_EQ(fixed->dwFileVersionLS, 0x00000001u);
    EXPECT_EQ(fixed->dwProductVersionMS, 0x00010000u);
    EXPECT_EQ(fixed->dwProductVersionLS, 0x00000001u);
}
