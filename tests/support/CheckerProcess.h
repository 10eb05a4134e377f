#pragma once

#include "support/TempDir.h"

#include <string>
#include <sys/types.h>
#include <vector>

// sondara-check as built, started as its own process in a test's folder,
// for what only the whole program shows: its streams and exit status.
// POSIX only; the path of the program comes from the test's build.

struct CheckerOutcome {
    // The exit status; 128 and the signal for a checker a signal ended
    // (one still running after a minute is ended by SIGALRM); -1 when it
    // could not be waited for.
    int status;
    std::string out;
    std::string err;
};

// Settings such as "NAME=value", added to the checker's environment.
using CheckerSettings = std::vector<std::string>;

// The fault library preloaded, watching the files whose path holds name,
// with its faults as settings (SONDARA_FAULT_...). A checker built with
// AddressSanitizer must be told that its runtime is not the first library.
CheckerSettings FaultSettings(const std::string& name, CheckerSettings faults);

// Runs the checker with these arguments in dir, standard input from input
// and its other streams into files there (standard output into outputPath
// instead when one is given, and then out stays empty).
CheckerOutcome RunChecker(const TempDir& dir, const std::vector<std::string>& arguments, const std::string& input = "",
                          const CheckerSettings& settings = {}, const std::string& outputPath = "");

// A run of the checker and all that it must give.
struct CheckerRun {
    std::vector<std::string> arguments;
    int status;
    std::string out;
    std::string err = "";
    std::string input = "";
};

// Runs each in dir and compares its status and both streams; a failure
// names the command line and the input.
void ExpectRuns(const TempDir& dir, const std::vector<CheckerRun>& runs);

// Starts the checker in dir with its streams on the descriptors given; with
// ignorePipeSignal it starts with SIGPIPE ignored, as some shells and
// language runtimes start their children.
pid_t StartChecker(const TempDir& dir, const std::vector<std::string>& arguments, int in, int out, int err,
                   const CheckerSettings& settings = {}, bool ignorePipeSignal = false);
// Starts the checker in dir on a terminal of its own, in raw mode, with
// standard input empty; terminal is the test's end of it.
pid_t StartCheckerOnTerminal(const TempDir& dir, const std::vector<std::string>& arguments,
                             const CheckerSettings& settings, int& terminal);
// Waits for a checker: its status as CheckerOutcome has it.
int WaitForChecker(pid_t child);

// The paths of the JSON objects of an output, in their order.
std::vector<std::string> JsonPaths(const std::string& out);

// The CSV heading, byte order mark first.
inline const std::string kCsvHeading =
    "\xEF\xBB\xBF\"path\",\"severity\",\"code\",\"offset\",\"chunk\",\"value\",\"declared\",\"actual\",\"message\",\"text\","
    "\"container\",\"formatTag\",\"subFormat\",\"sampleRate\",\"channels\",\"bits\",\"blockAlign\",\"frames\",\"seconds\"\r\n";
// The header facts of SoundWave(), as JSON and CSV give them.
inline const std::string kSoundWaveFactsJson =
    "\"format\": {\"container\": \"riff\", \"formatTag\": 1, \"subFormat\": null, \"sampleRate\": 44100, \"channels\": 2, "
    "\"bits\": 16, \"blockAlign\": 4, \"frames\": 4, \"seconds\": 0.000091}";
inline const std::string kSoundWaveFactsCsv = ",\"riff\",1,\"\",44100,2,16,4,4,0.000091";
