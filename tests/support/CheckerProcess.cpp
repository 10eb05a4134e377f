#include "support/CheckerProcess.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>

std::string FileContents(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

pid_t StartChecker(const TempDir& dir, const std::vector<std::string>& arguments, int in, int out, int err,
                   const CheckerSettings& settings, bool ignorePipeSignal)
{
    std::vector<std::string> words{SONDARA_CHECK_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    std::vector<std::string> settingsCopy = settings;
    const pid_t child = fork();
    if (child == 0) {
        if (chdir(dir.Native().c_str()) != 0)
            _exit(126);
        for (std::string& setting : settingsCopy)
            putenv(setting.data());
        std::signal(SIGPIPE, ignorePipeSignal ? SIG_IGN : SIG_DFL);
        dup2(in, 0);
        dup2(out, 1);
        dup2(err, 2);
        // The alarm outlives exec: a checker that hangs or spins ends.
        alarm(60);
        execv(argv[0], argv.data());
        _exit(127);
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
    return {status, outputPath.empty() ? FileContents(out) : "", FileContents(err)};
}
