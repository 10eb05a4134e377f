#include "check/CheckCommand.h"
#include "support/RiffBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#ifdef SONDARA_CHECK_PROGRAM
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#ifdef SONDARA_CHECK_PROGRAM
// sondara-check itself, started as its own process in a folder of sample
// files: what it prints on each stream and its exit status.
namespace {

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

std::string Contents(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Runs the checker with these arguments in dir; the streams go to files
// beside the samples. A checker that doesn't end normally gives -1.
Outcome RunChecker(const TempDir& dir, std::vector<std::string> arguments, const std::string& input = "")
{
    std::string program = SONDARA_CHECK_PROGRAM;
    std::vector<char*> argv{program.data()};
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    const std::string out = dir.Native() + "/stdout.txt";
    const std::string err = dir.Native() + "/stderr.txt";
    const std::string in = dir.Native() + "/stdin.txt";
    {
        std::ofstream(in, std::ios::binary) << input;
    }
    const pid_t child = fork();
    if (child == 0) {
        if (chdir(dir.Native().c_str()) != 0)
            _exit(126);
        dup2(open(in.c_str(), O_RDONLY), 0);
        dup2(open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 1);
        dup2(open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
        execv(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return {-1, {}, {}};
    return {WEXITSTATUS(status), Contents(out), Contents(err)};
}

} // namespace

TEST(CheckCommandProgram, OptionsStreamsAndExitStatus)
{
    TempDir dir;
    dir.Write("sound.wav", SoundWave());
    dir.Write("--json", SoundWave());
    dir.Write("-x", "not a wave file");
    const std::string usage = "usage: sondara-check [--json | --jsonl | --csv] [--strict] [-j N] FILE...\n"
                              "       sondara-check [--json] [--chunks | --levels] FILE...\n"
                              "       sondara-check [--json] --tidy OUT FILE\n";
    const std::string soundChunks = "RIFF at 0, 52 bytes, form WAVE\n  fmt  at 12, 16 bytes\n  data at 36, 16 bytes\n";
    const std::string silentChannel = "peak -inf dBFS, RMS -inf dBFS, DC offset 0.000000, 0 samples at full scale\n";
    const std::string clear = "チェック完了しました。\n";
    // Help is the usage and then a word on each option; its first line stands for it.
    const std::string help = usage + "Checks WAV files as the Sondara window does and prints a report for each,\n";
    const std::string notRiff = "RIFF形式ではありません。\n";
    const std::string noFile = "ファイルがありません。\n";
    const std::string clearJson = "\\u30c1\\u30a7\\u30c3\\u30af\\u5b8c\\u4e86\\u3057\\u307e\\u3057\\u305f\\u3002\\r\\n";
    const std::string notRiffJson = "RIFF\\u5f62\\u5f0f\\u3067\\u306f\\u3042\\u308a\\u307e\\u305b\\u3093\\u3002\\r\\n";
    const std::string notRiffFinding = "{\"code\": \"riff.not-riff\", \"severity\": \"error\", \"message\": "
                                       "\"The file is not a RIFF file.\", \"text\": \"" +
                                       notRiffJson.substr(0, notRiffJson.size() - 4) + "\"}";
    const std::string summaryOf2 = "2 files: 1 sound, 1 with findings, 0 with warnings, 0 unreadable\n";
    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string out, err;
        std::string input = "";
    } cases[] = {
        // Help goes before any check, wherever it stands among the options.
        {{"sound.wav", "--help", "-x"}, 0, help, ""},
        {{}, 2, "", usage},
        {{"--json"}, 2, "", usage},
        {{"-x"}, 2, "", "sondara-check: unknown option -x\n" + usage},
        {{"sound.wav"}, 0, clear, ""},
        {{"missing.wav"}, 1, noFile, ""},
        // A lone "-" reads the paths from standard input, one a line.
        {{"-"}, 1, "== sound.wav\n" + clear + "== missing.wav\n" + noFile + summaryOf2, "", "sound.wav\r\n\nmissing.wav"},
        {{"sound.wav", "missing.wav"}, 1, "== sound.wav\n" + clear + "== missing.wav\n" + noFile + summaryOf2, ""},
        {{"--json", "sound.wav"}, 0,
         "[\n  {\"path\": \"sound.wav\", \"report\": \"" + clearJson + "\", \"hasError\": false, \"findings\": []}\n]\n", ""},
        {{"--json", "--csv", "sound.wav"}, 2, "", "sondara-check: --json, --jsonl and --csv go one at a time\n" + usage},
        {{"-j", "0", "sound.wav"}, 2, "", "sondara-check: -j takes a number from 1 to 256\n" + usage},
        {{"--chunks", "--csv", "sound.wav"}, 2, "", "sondara-check: --jsonl and --csv go with the check only\n" + usage},
        // After "--" everything is a path, options and help included.
        {{"--", "--help"}, 1, noFile, ""},
        {{"--json", "--", "--json", "-x"}, 1,
         "[\n  {\"path\": \"--json\", \"report\": \"" + clearJson + "\", \"hasError\": false, \"findings\": []},\n"
         "  {\"path\": \"-x\", \"report\": \"" + notRiffJson + "\", \"hasError\": true, \"findings\": [" + notRiffFinding + "]}\n]\n", ""},
        {{"--", "-x", "sound.wav"}, 1, "== -x\n" + notRiff + "== sound.wav\n" + clear + summaryOf2, ""},
        // The chunk list and the levels: a file that can't be listed or
        // measured says why in its place, and makes the status 1.
        {{"--chunks", "sound.wav"}, 0, soundChunks, ""},
        {{"--chunks", "missing.wav", "sound.wav"}, 1, "== missing.wav\n(no such file)\n== sound.wav\n" + soundChunks, ""},
        {{"--json", "--chunks", "--", "-x"}, 1, "[\n  {\"path\": \"-x\", \"error\": \"not a RIFF file\"}\n]\n", ""},
        {{"--levels", "sound.wav"}, 0,
         "duration 0:00.000 (4 frames at 44,100 Hz, 16-bit)\nchannel 1: " + silentChannel + "channel 2: " + silentChannel, ""},
        {{"--json", "--levels", "sound.wav"}, 0,
         "[\n  {\"path\": \"sound.wav\", \"frames\": 4, \"sampleRate\": 44100, \"bits\": 16, \"seconds\": 0.000091, "
         "\"channels\": [{\"peak\": null, \"rms\": null, \"dcOffset\": 0.000000, \"fullScale\": 0}, "
         "{\"peak\": null, \"rms\": null, \"dcOffset\": 0.000000, \"fullScale\": 0}]}\n]\n", ""},
        {{"--levels", "--chunks", "sound.wav"}, 2, "", "sondara-check: --chunks, --levels and --tidy go one at a time\n" + usage},
        {{"--tidy"}, 2, "", "sondara-check: --tidy needs the path of the copy\n" + usage},
        {{"--tidy", "copy.wav", "sound.wav", "-"}, 2, "", "sondara-check: --tidy copies one file at a time\n" + usage},
        // The copy never goes over a file, its input included.
        {{"--tidy", "sound.wav", "sound.wav"}, 1, "not written: sound.wav exists; the copy goes to a new path only\n", ""},
        {{"--json", "--tidy", "copy.wav", "sound.wav"}, 0,
         "[\n  {\"path\": \"sound.wav\", \"output\": \"copy.wav\", \"written\": true, "
         "\"changes\": [\"RIFF size 52 -> 54\", \"fmt: 16 -> 18 bytes\"]}\n]\n", ""},
    };
    for (const auto& c : cases) {
        std::string line;
        for (const std::string& argument : c.arguments)
            line += " " + argument;
        SCOPED_TRACE("sondara-check" + line);
        const Outcome outcome = RunChecker(dir, c.arguments, c.input);
        EXPECT_EQ(outcome.status, c.status);
        EXPECT_EQ(c.out == help ? outcome.out.substr(0, help.size()) : outcome.out, c.out);
        EXPECT_EQ(outcome.err, c.err);
    }
}
#endif
