// What a script may rely on in the checker's output: every failure to
// write gives a non-zero status, every JSON object has the same members,
// results reach a reader as each file is done, the progress line never
// runs into a result, options mean the same in any order, a run over
// nothing says so, and CSV cells are never formulas.
#include "base/TextFormat.h"
#include "support/CheckerProcess.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#ifdef SONDARA_CHECK_PROGRAM
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#endif

TEST(TextFormat, CsvFieldsAreQuotedAndNeverFormulas)
{
    const struct {
        const char* text;
        const char* field;
    } cases[] = {
        {"", "\"\""},
        {"plain.wav", "\"plain.wav\""},
        {"say \"hi\".wav", "\"say \"\"hi\"\".wav\""},
        {"a,b\r\nc.wav", "\"a,b\r\nc.wav\""},
        {"=HYPERLINK(\"http://x\",\"y\").wav", "\"'=HYPERLINK(\"\"http://x\"\",\"\"y\"\").wav\""},
        {"+1.wav", "\"'+1.wav\""},
        {"-2.wav", "\"'-2.wav\""},
        {"@SUM(A1).wav", "\"'@SUM(A1).wav\""},
        {"\tx.wav", "\"'\tx.wav\""},
        {"\rx.wav", "\"'\rx.wav\""},
        // Only the first character decides.
        {"a=b.wav", "\"a=b.wav\""},
        {"チェック=.wav", "\"チェック=.wav\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(CsvField(c.text), c.field);
    }
}

TEST(TextFormat, JsonStringsAreAsciiAndKeepEveryUnit)
{
    const struct {
        std::u16string text;
        const char* json;
    } cases[] = {
        {u"", "\"\""},
        {u"a\"b\\c", "\"a\\\"b\\\\c\""},
        {u"\r\n\t", "\"\\r\\n\\t\""},
        {std::u16string(1, u'\0') + u"\x01\x1f\x7f", "\"\\u0000\\u0001\\u001f\\u007f\""},
        {u"チェック", "\"\\u30c1\\u30a7\\u30c3\\u30af\""},
        {u"\U0001F3B5", "\"\\ud83c\\udfb5\""},
        // A lone surrogate, as a name's byte that is not UTF-8 is carried.
        {u"caf\xDCE9.wav", "\"caf\\udce9.wav\""},
    };
    for (const auto& c : cases) {
        std::string out;
        AppendJsonString(out, c.text);
        EXPECT_EQ(out, c.json);
    }
}

TEST(TextFormat, FixedDecimalsOfEveryMagnitude)
{
    const struct {
        double value;
        int decimals;
        const char* text;
    } cases[] = {
        {0, 2, "0.00"},
        {-0.004, 2, "0.00"},
        {-0.005, 2, "-0.01"},
        {0.5, 0, "1"},
        {-23.456, 1, "-23.5"},
        {1e20, 1, "100000000000000000000.0"},
        {-1e20, 0, "-100000000000000000000"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(FormatFixed(c.value, c.decimals), c.text);
    }
}

#ifdef SONDARA_CHECK_PROGRAM
namespace {

// Reads from fd until text has come or the time is up.
std::string ReadUntil(int fd, const std::string& text, int milliseconds)
{
    std::string got;
    char buffer[4096];
    while (got.find(text) == std::string::npos) {
        pollfd waiting{fd, POLLIN, 0};
        if (poll(&waiting, 1, milliseconds) <= 0)
            break;
        const ssize_t count = read(fd, buffer, sizeof buffer);
        if (count <= 0)
            break;
        got.append(buffer, static_cast<std::size_t>(count));
    }
    return got;
}

} // namespace

TEST(CheckerOutput, FailedWritesAreNeverSuccess)
{
    TempDir dir;
    dir.MakeDir("folder");
    for (int i = 0; i < 50; ++i)
        dir.Write("folder/" + std::to_string(i) + ".wav", SoundWave());
    // A full device: the status is 1 and standard error says why, in every
    // mode, whatever the amount of output.
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--json", "folder"}, {"folder"}, {"--jsonl", "folder"},
                                               {"--csv", "folder"}, {"--json", "--chunks", "folder"},
                                               {"--levels", "folder"}, {"--version"}, {"--help"}}) {
        SCOPED_TRACE(arguments[0]);
        const CheckerOutcome full = RunChecker(dir, arguments, "", {}, "/dev/full");
        EXPECT_EQ(full.status, 1);
        EXPECT_EQ(full.err, "sondara-check: standard output can't be written: No space left on device\n");
    }

    // A reader that has gone: the signal ends the checker as it ends every
    // tool of a pipeline, or, where the signal is ignored, status 1 and no
    // word.
    for (const bool ignorePipe : {false, true}) {
        SCOPED_TRACE(ignorePipe ? "SIGPIPE ignored" : "SIGPIPE as it comes");
        int pipeFds[2];
        ASSERT_EQ(pipe(pipeFds), 0);
        close(pipeFds[0]);
        const int errFd = open((dir.Native() + "/stderr.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int inFd = open("/dev/null", O_RDONLY);
        const int status = WaitForChecker(StartChecker(dir, {"--jsonl", "folder"}, inFd, pipeFds[1], errFd, {}, ignorePipe));
        close(pipeFds[1]);
        close(errFd);
        close(inFd);
        EXPECT_EQ(status, ignorePipe ? 1 : 128 + SIGPIPE);
        EXPECT_EQ(dir.Read("stderr.txt"), "");
    }
}

TEST(CheckerOutput, EveryJsonObjectHasItsMembersAndNothingToCheckSaysSo)
{
    TempDir dir;
    dir.MakeDir("links");
    dir.Write("links/sound.wav", SoundWave());
    ASSERT_EQ(symlink("gone.wav", (dir.Native() + "/links/broken.wav").c_str()), 0);
    ASSERT_EQ(symlink("..", (dir.Native() + "/links/up").c_str()), 0);
    const CheckerOutcome links = RunChecker(dir, {"--json", "links"});
    EXPECT_EQ(links.status, 1);
    std::size_t objects = 0;
    for (std::size_t at = links.out.find("{\"path\": "); at != std::string::npos;
         at = links.out.find("{\"path\": ", at + 1), ++objects) {
        const std::string object = links.out.substr(at, links.out.find('\n', at) - at);
        SCOPED_TRACE(object);
        for (const char* member : {"\"report\": ", "\"hasError\": ", "\"findings\": [", "\"format\": "})
            EXPECT_NE(object.find(member), std::string::npos);
    }
    EXPECT_EQ(objects, 3u);
    EXPECT_NE(links.out.find("], \"format\": null}"), std::string::npos); // the broken link's, never read
    EXPECT_NE(links.out.find("{\"path\": \"links/broken.wav\", \"report\": null, \"hasError\": true, \"findings\": "
                             "[{\"code\": \"file.broken-link\""),
              std::string::npos);

    // A run over nothing is not a run over sound files.
    dir.MakeDir("empty");
    dir.MakeDir("other");
    dir.Write("other/take.bwf", SoundWave());
    ExpectRuns(dir, {
        {{"empty"}, 1, "", "sondara-check: no .wav file in empty\n"},
        {{"--json", "other"}, 1, "[]\n", "sondara-check: no .wav file in other\n"},
        {{"-"}, 1, "", "sondara-check: no path on standard input\n"},
        {{"-"}, 1, "", "sondara-check: no path on standard input\n", "\n\r\n"},
        {{"--levels", "empty"}, 1, "", "sondara-check: no .wav file in empty\n"},
        {{"links/sound.wav", "empty"}, 1, "チェック完了しました。\n", "sondara-check: no .wav file in empty\n"},
    });
}

// The header facts of every checked file, from its header alone: what the
// header can't tell is null, and no frame is counted that the file lacks.
TEST(CheckerOutput, HeaderFactsSayOnlyWhatTheHeaderTells)
{
    TempDir dir;
    const std::string whole = SoundWave(100);
    const std::string nothing = "\"formatTag\": null, \"subFormat\": null, \"sampleRate\": null, \"channels\": null, "
                                "\"bits\": null, \"blockAlign\": null, \"frames\": null, \"seconds\": null}";
    const struct {
        std::string name;
        std::string bytes;
        std::string facts;
    } cases[] = {
        {"cut.wav", whole.substr(0, 44 + 101),
         "{\"container\": \"riff\", \"formatTag\": 1, \"subFormat\": null, \"sampleRate\": 44100, \"channels\": 2, "
         "\"bits\": 16, \"blockAlign\": 4, \"frames\": 25, \"seconds\": 0.000567}"},
        {"rate0.wav", Wave(FormatBody(1, 1, 0, 16), std::string(8, '\0')),
         "{\"container\": \"riff\", \"formatTag\": 1, \"subFormat\": null, \"sampleRate\": 0, \"channels\": 1, "
         "\"bits\": 16, \"blockAlign\": 2, \"frames\": 4, \"seconds\": null}"},
        {"nofmt.wav", Riff(DataBytes("abcd")), "{\"container\": \"riff\", " + nothing},
        {"text.wav", "not a wave file", "{\"container\": null, " + nothing},
    };
    std::vector<std::string> arguments = {"--jsonl"};
    for (const auto& c : cases) {
        dir.Write(c.name, c.bytes);
        arguments.push_back(c.name);
    }
    arguments.push_back("gone.wav");
    const CheckerOutcome run = RunChecker(dir, arguments);
    std::istringstream lines(run.out);
    std::string line;
    for (const std::string& facts : {cases[0].facts, cases[1].facts, cases[2].facts, cases[3].facts,
                                     "{\"container\": null, " + nothing}) {
        ASSERT_TRUE(std::getline(lines, line));
        EXPECT_NE(line.find("\"format\": " + facts), std::string::npos) << line;
    }

    // CSV: every row of a file ends in its facts.
    const CheckerOutcome csv = RunChecker(dir, {"--csv", "cut.wav", "gone.wav"});
    EXPECT_NE(csv.out.find("\"blockAlign\",\"frames\",\"seconds\"\r\n\"cut.wav\""), std::string::npos);
    EXPECT_NE(csv.out.find(",\"riff\",1,\"\",44100,2,16,4,25,0.000567\r\n"), std::string::npos);
    EXPECT_NE(csv.out.find("\"file.missing\",,\"\",,,,\"The file does not exist.\",\"ファイルがありません。\",\"\",,\"\",,,,,,\r\n"),
              std::string::npos)
        << csv.out;
}

TEST(CheckerOutput, ListsAndOptionsInAnyForm)
{
    TempDir dir;
    dir.Write("a.wav", SoundWave(4410));
    dir.Write("b.wav", SoundWave());
    const std::string two = "== a.wav\nチェック完了しました。\n== b.wav\nチェック完了しました。\n"
                            "2 files: 2 sound, 0 with findings, 0 with warnings, 0 unreadable\n";
    // A byte order mark before the first path, CR LF, and paths ended by a
    // zero byte with -0 (where a line end may be part of a name).
    for (const auto& [arguments, input] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"-"}, "a.wav\nb.wav\n"},
             {{"-"}, "\xEF\xBB\xBF" "a.wav\r\nb.wav"},
             {{"-0", "-"}, std::string("a.wav\0b.wav\0", 12)},
             {{"-", "-0"}, std::string("\xEF\xBB\xBF" "a.wav\0b.wav", 14)},
         }) {
        SCOPED_TRACE(input);
        const CheckerOutcome outcome = RunChecker(dir, arguments, input);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out, two);
    }

    // The options say the same in any order.
    const std::vector<std::vector<std::string>> orders[] = {
        {{"--levels", "--loudness", "a.wav"}, {"--loudness", "--levels", "a.wav"}, {"a.wav", "--loudness", "--levels"}},
        {{"--json", "--levels", "--target", "ebu-r128", "a.wav"}, {"--target", "ebu-r128", "--levels", "--json", "a.wav"},
         {"--target", "ebu-r128", "a.wav", "--json"}},
        {{"--target-lufs", "-20", "--tolerance", "2", "a.wav"}, {"--tolerance", "2", "--target-lufs", "-20", "a.wav"},
         {"--tolerance", "2", "--levels", "--target-lufs", "-20", "a.wav"}},
        {{"--strict", "--csv", "-j", "2", "a.wav"}, {"-j2", "a.wav", "--csv", "--strict"}},
    };
    for (const auto& same : orders) {
        const CheckerOutcome first = RunChecker(dir, same[0]);
        EXPECT_NE(first.out, "");
        for (const std::vector<std::string>& arguments : same) {
            SCOPED_TRACE(arguments[0] + " " + arguments[1]);
            const CheckerOutcome outcome = RunChecker(dir, arguments);
            EXPECT_EQ(outcome.status, first.status);
            EXPECT_EQ(outcome.out, first.out);
            EXPECT_EQ(outcome.err, "");
        }
    }
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--loudness", "--chunks", "a.wav"}, {"--info", "--levels", "a.wav"},
                                              {"--tidy", "c.wav", "--target", "streaming", "a.wav"}}) {
        const CheckerOutcome outcome = RunChecker(dir, arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_TRUE(outcome.err.starts_with("sondara-check: --chunks, --info, --levels and --tidy go one at a time\n"));
    }
}

// The first open of held.wav takes 5 seconds: the results before it
// must have reached the reader by then, and on a terminal the progress line
// that shows once a second has gone must stand alone.
TEST(CheckerOutput, ResultsReachTheReaderAsEachFileIsDone)
{
    TempDir dir;
    dir.Write("first.wav", SoundWave());
    dir.Write("held.wav", SoundWave());
    dir.Write("last.wav", SoundWave());
    const CheckerSettings slowOpen = FaultSettings("held.wav", {"SONDARA_FAULT_OPEN_DELAY_MS=5000"});

    // JSON Lines into a pipe.
    int pipeFds[2];
    ASSERT_EQ(pipe(pipeFds), 0);
    const int inFd = open("/dev/null", O_RDONLY);
    const pid_t child = StartChecker(dir, {"--jsonl", "-j", "1", "first.wav", "held.wav", "last.wav"}, inFd,
                                     pipeFds[1], 2, slowOpen);
    close(pipeFds[1]);
    close(inFd);
    const std::string early = ReadUntil(pipeFds[0], "\n", 4500);
    EXPECT_TRUE(early.starts_with("{\"type\": \"file\", \"path\": \"first.wav\"")) << early;
    EXPECT_EQ(early.find("held.wav"), std::string::npos);
    ReadUntil(pipeFds[0], "\"summary\"", 10000);
    close(pipeFds[0]);
    EXPECT_EQ(WaitForChecker(child), 0);

    // Text on a terminal: a folder of a thousand files, then the one that
    // waits, and more behind it than the checks run ahead of the printer.
    std::vector<std::string> arguments{"-j", "1", "many", "held.wav"};
    dir.MakeDir("many");
    for (int i = 0; i < 1000; ++i)
        dir.Write("many/" + std::to_string(i) + ".wav", SoundWave());
    for (int i = 0; i < 20; ++i) {
        arguments.push_back("next-" + std::to_string(i) + ".wav");
        dir.Write(arguments.back(), SoundWave());
    }
    arguments.push_back("last.wav");
    int terminal = -1;
    const pid_t onTerminal = StartCheckerOnTerminal(dir, arguments, slowOpen, terminal);
    ASSERT_GT(onTerminal, 0);
    // Before the held file's check ends, the thousand are on the screen.
    std::string screen = ReadUntil(terminal, "== many/999.wav\nチェック完了しました。\n", 4500);
    EXPECT_NE(screen.find("== many/999.wav\n"), std::string::npos);
    // Everything up to the end of the terminal: closed before the checker
    // has ended, it would end it with SIGHUP.
    screen += ReadUntil(terminal, std::string(1, '\0'), 20000);
    EXPECT_EQ(WaitForChecker(onTerminal), 0);
    close(terminal);
    const std::string clear = "\r\x1b[K";
    const std::string tail = screen.substr(screen.size() > 400 ? screen.size() - 400 : 0);
    // The walk has not yet seen its end after the held file: the count
    // has no total until it has.
    EXPECT_NE(screen.find("== held.wav\nチェック完了しました。\n\rchecked 1,001 files" + clear + "== next-0.wav\n"),
              std::string::npos)
        << tail;
    EXPECT_NE(screen.find("== last.wav\nチェック完了しました。\n\rchecked 1,022 of 1,022 files" + clear +
                          "1,022 files: 1,022 sound"),
              std::string::npos)
        << tail;
}

// Paths on standard input are checked as they come, not once it ends: the
// results of the first lines reach the reader while the writer of the list
// still holds it open; a folder named there is walked in its place.
TEST(CheckerOutput, StandardInputIsCheckedAsItComes)
{
    TempDir dir;
    dir.MakeDir("folder");
    for (const char* name : {"a.wav", "b.wav", "c.wav", "folder/d.wav", "folder/e.wav"})
        dir.Write(name, SoundWave());
    // Ends that only this process holds: the checker's standard input ends
    // when this side closes it.
    int input[2], output[2];
    ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
    ASSERT_EQ(pipe2(output, O_CLOEXEC), 0);
    const pid_t child = StartChecker(dir, {"--jsonl", "-j", "2", "-"}, input[0], output[1], 2);
    close(input[0]);
    close(output[1]);
    const std::string lines = "a.wav\nb.wav\nc.wav\n";
    ASSERT_EQ(write(input[1], lines.data(), lines.size()), static_cast<ssize_t>(lines.size()));
    const std::string early = ReadUntil(output[0], "\"path\": \"b.wav\"", 4500);
    EXPECT_NE(early.find("\"path\": \"a.wav\""), std::string::npos) << early;
    EXPECT_NE(early.find("\"path\": \"b.wav\""), std::string::npos) << early;
    const std::string rest = "folder\n";
    ASSERT_EQ(write(input[1], rest.data(), rest.size()), static_cast<ssize_t>(rest.size()));
    close(input[1]);
    const std::string late = early + ReadUntil(output[0], "\"summary\"", 10000);
    close(output[0]);
    EXPECT_EQ(WaitForChecker(child), 0);
    EXPECT_EQ(JsonPaths(late), (std::vector<std::string>{"a.wav", "b.wav", "c.wav", "folder/d.wav", "folder/e.wav"}));
    EXPECT_NE(late.find("\"files\": 5, \"sound\": 5"), std::string::npos) << late;
}
#endif
