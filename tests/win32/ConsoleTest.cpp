// Standard streams on a real console: characters rather than code-page
// bytes, the progress line's clearing, and lists piped in either UTF-8 or
// the console's code page.
#include "platform/Console.h"

#include <gtest/gtest.h>

#include <string>
#include <windows.h>

namespace {

// A console of the test's own, with standard output and error on its screen
// and standard input on a pipe the test writes. The test's own output goes
// on to where it went, through the C runtime's descriptors.
class ConsoleStreams : public testing::Test {
protected:
    void SetUp() override
    {
        for (DWORD which : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE})
            saved.push_back(GetStdHandle(which));
        FreeConsole();
        ASSERT_TRUE(AllocConsole());
        screen = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(screen, INVALID_HANDLE_VALUE);
        // Wine makes a console only where it has a display to show it on.
        DWORD mode = 0;
        ASSERT_TRUE(GetConsoleMode(screen, &mode)) << "no console: under Wine a console needs DISPLAY";
        SetStdHandle(STD_OUTPUT_HANDLE, screen);
        SetStdHandle(STD_ERROR_HANDLE, screen);
    }

    // Wine's FreeConsole closes the handles that stand as standard streams
    // then: the test's own go back only after it.
    void TearDown() override
    {
        if (screen != INVALID_HANDLE_VALUE)
            CloseHandle(screen);
        FreeConsole();
        SetStdHandle(STD_INPUT_HANDLE, saved[0]);
        SetStdHandle(STD_OUTPUT_HANDLE, saved[1]);
        SetStdHandle(STD_ERROR_HANDLE, saved[2]);
    }

    // The characters of a row of the screen, without the blanks at its end.
    std::u16string Row(SHORT y) const
    {
        CONSOLE_SCREEN_BUFFER_INFO info;
        GetConsoleScreenBufferInfo(screen, &info);
        std::wstring text(static_cast<std::size_t>(info.dwSize.X), L' ');
        DWORD read = 0;
        ReadConsoleOutputCharacterW(screen, text.data(), static_cast<DWORD>(text.size()), COORD{0, y}, &read);
        text.resize(read);
        text.erase(text.find_last_not_of(L' ') + 1);
        return std::u16string(text.begin(), text.end());
    }

    COORD Cursor() const
    {
        CONSOLE_SCREEN_BUFFER_INFO info;
        GetConsoleScreenBufferInfo(screen, &info);
        return info.dwCursorPosition;
    }

    void Home() const
    {
        CONSOLE_SCREEN_BUFFER_INFO info;
        GetConsoleScreenBufferInfo(screen, &info);
        DWORD done = 0;
        const DWORD cells = static_cast<DWORD>(info.dwSize.X) * static_cast<DWORD>(info.dwSize.Y);
        FillConsoleOutputCharacterW(screen, L' ', cells, COORD{0, 0}, &done);
        SetConsoleCursorPosition(screen, COORD{0, 0});
    }

    std::vector<HANDLE> saved;
    HANDLE screen = INVALID_HANDLE_VALUE;
};

// A pipe whose read end stands as standard input, holding bytes.
class PipedInput {
public:
    explicit PipedInput(std::string_view bytes)
    {
        CreatePipe(&read, &write, nullptr, 0);
        DWORD written = 0;
        WriteFile(write, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
        SetStdHandle(STD_INPUT_HANDLE, read);
    }
    ~PipedInput()
    {
        CloseHandle(read);
        CloseHandle(write);
    }

    HANDLE read = nullptr;
    HANDLE write = nullptr;
};

} // namespace

// UTF-8 reaches a console as characters, whatever its output code page:
// Japanese shows without switching the console to UTF-8 first, and a
// character cut between two writes shows whole.
TEST_F(ConsoleStreams, StandardOutputShowsUtf8AsCharacters)
{
    ASSERT_TRUE(SetConsoleOutputCP(437));
    Home();
    std::string failure;
    EXPECT_TRUE(platform::WriteToStandardOutput("== 納品/テスト.wav\r\nチェック完了しました。\r\n", failure));
    EXPECT_TRUE(platform::WriteToStandardOutput("caf\xC3", failure));
    EXPECT_TRUE(platform::WriteToStandardOutput("\xA9 \xF0\x9F", failure));
    EXPECT_TRUE(platform::WriteToStandardOutput("\x98\x80!\r\n", failure));
    EXPECT_EQ(failure, "");
    platform::WriteToStandardError("注意：RIFF\r\n");
    EXPECT_EQ(Row(0), u"== 納品/テスト.wav");
    EXPECT_EQ(Row(1), u"チェック完了しました。");
    EXPECT_EQ(Row(2), u"café \U0001F600!");
    EXPECT_EQ(Row(3), u"注意：RIFF");
    EXPECT_TRUE(platform::IsStandardOutputTerminal());
    EXPECT_TRUE(platform::IsStandardErrorTerminal());
}

// The progress line clears itself with "\r\x1b[K". The first write to a
// console switches escape sequences on; a console that can't show them
// gets the line blanked by its own calls, with no escape showing and the
// cursor where the new text ends.
TEST_F(ConsoleStreams, ProgressLineClearsItself)
{
    DWORD mode = 0;
    ASSERT_TRUE(GetConsoleMode(screen, &mode));
    SetConsoleMode(screen, mode & ~static_cast<DWORD>(ENABLE_VIRTUAL_TERMINAL_PROCESSING));
    Home();
    platform::WriteToStandardError("\rchecked 1,234 of 10,000 files");
    ASSERT_TRUE(GetConsoleMode(screen, &mode));
    EXPECT_NE(mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING, 0u);
    // Wine's console takes the mode and still prints the escape as it is;
    // what shows there is the blanking without escapes.
    const bool showsEscapes = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr;
    for (bool escapes : {true, false}) {
        if (escapes && !showsEscapes)
            continue;
        SCOPED_TRACE(escapes ? "escape sequences on" : "escape sequences off");
        Home();
        platform::WriteToStandardError("\rchecked 1,234 of 10,000 files");
        if (!escapes)
            SetConsoleMode(screen, mode & ~static_cast<DWORD>(ENABLE_VIRTUAL_TERMINAL_PROCESSING));
        platform::WriteToStandardError("\r\x1b[K");
        std::string failure;
        platform::WriteToStandardOutput("ok.wav\r\n", failure);
        platform::WriteToStandardError("\rchecked 9 of 10 files\r\x1b[Kdone");
        EXPECT_EQ(Row(0), u"ok.wav");
        EXPECT_EQ(Row(1), u"done");
        EXPECT_EQ(Cursor().X, 4);
        EXPECT_EQ(Cursor().Y, 1);
    }
}

// Bytes meant for a pipe or a file go there as they are, not as characters.
TEST_F(ConsoleStreams, PipesGetTheBytesUnchanged)
{
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    ASSERT_TRUE(CreatePipe(&read, &write, nullptr, 0));
    SetStdHandle(STD_OUTPUT_HANDLE, write);
    const std::string bytes = "== 納品.wav\r\n\x1b[K\xE9\r\n";
    std::string failure;
    EXPECT_TRUE(platform::WriteToStandardOutput(bytes, failure));
    EXPECT_FALSE(platform::IsStandardOutputTerminal());
    std::string got(bytes.size() + 16, '\0');
    DWORD count = 0;
    ReadFile(read, got.data(), static_cast<DWORD>(got.size()), &count, nullptr);
    got.resize(count);
    EXPECT_EQ(got, bytes);
    // With the reader gone, the write fails without a reason to print.
    CloseHandle(read);
    EXPECT_FALSE(platform::WriteToStandardOutput("more\r\n", failure));
    EXPECT_EQ(failure, "");
    CloseHandle(write);
}

// A piped list is UTF-8 when it is valid UTF-8, and otherwise bytes of the
// console's code page, as cmd's `dir /b` writes them on Japanese Windows.
TEST_F(ConsoleStreams, PipedListInUtf8OrTheConsolesCodePage)
{
    ASSERT_TRUE(SetConsoleCP(932));
    ASSERT_EQ(GetConsoleCP(), 932u);
    PipedInput input("");
    const struct {
        std::string bytes;
        std::u16string text;
    } cases[] = {
        {"take 1.wav", u"take 1.wav"},
        {"\xE7\xB4\x8D\xE5\x93\x81\\\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88.wav", u"納品\\テスト.wav"},
        {"\x94\x5B\x95\x69\\\x83\x65\x83\x58\x83\x67.wav", u"納品\\テスト.wav"},
        // A second byte that is a backslash in ASCII stays inside its character.
        {"\x83\x5C\\a.wav", u"ソ\\a.wav"},
        // One byte that isn't UTF-8 makes the whole line the code page's.
        {"\xE7\xB4\x8D\x83\x65", u"\u908F\u9D3Be"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        EXPECT_EQ(platform::StandardInputToWide(c.bytes), c.text);
    }
}

// With no console, a line that isn't UTF-8 is read in the OEM code page,
// which cmd writes then.
TEST_F(ConsoleStreams, PipedListWithoutConsoleInTheOemCodePage)
{
    FreeConsole();
    PipedInput input("");
    const std::string bytes = "caf\x82.wav";
    std::wstring expected(16, L'\0');
    expected.resize(static_cast<std::size_t>(
        MultiByteToWideChar(GetOEMCP(), 0, bytes.data(), static_cast<int>(bytes.size()), expected.data(), 16)));
    EXPECT_EQ(platform::StandardInputToWide(bytes), std::u16string(expected.begin(), expected.end()));
    EXPECT_EQ(platform::StandardInputToWide("caf\xC3\xA9.wav"), u"café.wav");
}
