#include "support/CheckerProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

// The words and settings of a checker's start, made before the fork so
// that the child only calls what is safe there.
class CheckerStart {
public:
    CheckerStart(const TempDir& dir, const std::vector<std::string>& arguments, const CheckerSettings& settings)
        : folder(dir.Native()), words{SONDARA_CHECK_PROGRAM}, settings(settings)
    {
        words.insert(words.end(), arguments.begin(), arguments.end());
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
    }

    // In the child: becomes the checker, in its folder, with its settings.
    [[noreturn]] void Exec()
    {
        if (chdir(folder.c_str()) != 0)
            _exit(126);
        for (std::string& setting : settings)
            putenv(setting.data());
        // The alarm outlives exec: a checker that hangs or spins ends.
        alarm(60);
        execv(argv[0], argv.data());
        _exit(127);
    }

private:
    std::string folder;
    std::vector<std::string> words;
    std::vector<char*> argv;
    CheckerSettings settings;
};

} // namespace

CheckerSettings FaultSettings(const std::string& name, CheckerSettings faults)
{
    faults.push_back("LD_PRELOAD=" SONDARA_FAULT_SHIM);
    faults.push_back("SONDARA_FAULT_PATH=" + name);
    faults.push_back("ASAN_OPTIONS=verify_asan_link_order=0");
    return faults;
}

pid_t StartChecker(const TempDir& dir, const std::vector<std::string>& arguments, int in, int out, int err,
                   const CheckerSettings& settings, bool ignorePipeSignal)
{
    CheckerStart start(dir, arguments, settings);
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGPIPE, ignorePipeSignal ? SIG_IGN : SIG_DFL);
        dup2(in, 0);
        dup2(out, 1);
        dup2(err, 2);
        start.Exec();
    }
    return child;
}

pid_t StartCheckerOnTerminal(const TempDir& dir, const std::vector<std::string>& arguments,
                             const CheckerSettings& settings, int& terminal)
{
    CheckerStart start(dir, arguments, settings);
    termios raw{};
    cfmakeraw(&raw);
    const pid_t child = forkpty(&terminal, nullptr, &raw, nullptr);
    if (child == 0) {
        dup2(open("/dev/null", O_RDONLY), 0);
        start.Exec();
    }
    return child;
}

int WaitForChecker(pid_t child)
{
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

CheckerOutcome RunChecker(const TempDir& dir, const std::vector<std::string>& arguments, const std::string& input,
                          const CheckerSettings& settings, const std::string& outputPath)
{
    const std::string out = outputPath.empty() ? dir.Native() + "/stdout.txt" : outputPath;
    const std::string err = dir.Native() + "/stderr.txt";
    const std::string in = dir.Native() + "/stdin.txt";
    std::ofstream(in, std::ios::binary) << input;
    const int inFd = open(in.c_str(), O_RDONLY);
    const int outFd = open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int errFd = open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int status = WaitForChecker(StartChecker(dir, arguments, inFd, outFd, errFd, settings));
    close(inFd);
    close(outFd);
    close(errFd);
    return {status, outputPath.empty() ? dir.Read("stdout.txt") : "", dir.Read("stderr.txt")};
}

void ExpectRuns(const TempDir& dir, const std::vector<CheckerRun>& runs)
{
    for (const CheckerRun& run : runs) {
        std::string line = "sondara-check";
        for (const std::string& argument : run.arguments)
            line += " " + argument;
        SCOPED_TRACE(line + (run.input.empty() ? "" : " < " + run.input));
        const CheckerOutcome outcome = RunChecker(dir, run.arguments, run.input);
        EXPECT_EQ(outcome.status, run.status);
        EXPECT_EQ(outcome.out, run.out);
        EXPECT_EQ(outcome.err, run.err);
    }
}

std::vector<std::string> JsonPaths(const std::string& out)
{
    std::vector<std::string> paths;
    for (std::size_t at = out.find("\"path\": \""); at != std::string::npos; at = out.find("\"path\": \"", at + 1))
        paths.push_back(out.substr(at + 9, out.find('"', at + 9) - at - 9));
    return paths;
}
