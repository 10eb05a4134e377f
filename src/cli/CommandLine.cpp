#include "cli/CommandLine.h"

#include "base/TextFormat.h"
#include "base/Utf8.h"
#include "cli/CheckOptions.h"
#include "cli/ConsoleSink.h"
#include "measure/VectorPath.h"
#include "platform/Console.h"

#include "platform/ProgramVersion.h"

#include <cmath>
#include <cstdlib>

namespace {

constexpr char kOneMode[] = "sondara-check: --chunks, --info, --levels and --tidy go one at a time";

// The message, if any, and the usage on standard error; exit status 2.
int UsageError(const std::string& message)
{
    const std::string text = (message.empty() ? "" : message + "\n") + UsageText();
    platform::WriteToStandardError(WithLineEnd(text, platform::kLineEnd));
    return 2;
}

// A number such as "-23", "0.5" or "+1": false when it is none.
bool ParseDecibels(const std::u16string& text, double& value)
{
    std::string ascii;
    for (char16_t unit : text) {
        if (unit >= 0x80)
            return false;
        ascii += static_cast<char>(unit);
    }
    char* end = nullptr;
    value = std::strtod(ascii.c_str(), &end);
    return !ascii.empty() && end && *end == '\0' && std::isfinite(value);
}

// The number behind -j: a whole number from 1 to 256; 0 when it is none.
unsigned ParseJobs(const std::u16string& text)
{
    if (text.empty() || text.size() > 3)
        return 0;
    unsigned jobs = 0;
    for (char16_t unit : text) {
        if (unit < u'0' || unit > u'9')
            return 0;
        jobs = jobs * 10 + (unit - u'0');
    }
    return jobs <= 256 ? jobs : 0;
}

// The meters' settings: the option, what it takes, and its reading into
// the settings (false when the value is not one it takes).
struct MeterOption {
    std::u16string_view spelling;
    const char* takes;
    bool (*read)(const std::u16string& text, MeterSettings& settings);
};

constexpr MeterOption kMeterOptions[] = {
    {u"--silence-threshold", "a number of dBFS from -200 to 0",
     [](const std::u16string& text, MeterSettings& settings) {
         return ParseDecibels(text, settings.silenceThresholdDb) && settings.silenceThresholdDb >= -200 &&
                settings.silenceThresholdDb <= 0;
     }},
    {u"--silence-minimum", "a number of milliseconds above 0, at most a day",
     [](const std::u16string& text, MeterSettings& settings) {
         return ParseDecibels(text, settings.silenceMinimumMs) && settings.silenceMinimumMs > 0 &&
                settings.silenceMinimumMs <= 86400000;
     }},
    {u"--clipping-run", "a whole number from 1 to 1000000",
     [](const std::u16string& text, MeterSettings& settings) {
         double run = 0;
         settings.clippingRun = ParseDecibels(text, run) && run == std::floor(run) && run >= 1 && run <= 1000000
                                    ? static_cast<std::uint32_t>(run)
                                    : 0;
         return settings.clippingRun > 0;
     }},
};

const MeterOption* FindMeterOption(const std::u16string& argument)
{
    for (const MeterOption& option : kMeterOptions) {
        if (argument == option.spelling)
            return &option;
    }
    return nullptr;
}

// The flags as given, in any order; which mode they make is decided once
// they are all read.
struct Flags {
    OutputFormat format = OutputFormat::Text;
    int formats = 0;
    bool strict = false;
    unsigned jobs = 0;
    bool nulSeparated = false;
    bool chunks = false;
    bool info = false;
    bool levels = false;
    bool loudness = false;
    bool tidy = false;
    bool md5 = false;
    MeterSettings meters;
    bool meterOptions = false;
    WideString tidyOutput;
    std::string targetName;
    std::optional<Policy> policy;
    double customFigures[3] = {0, 0, 0};
    bool customGiven[3] = {false, false, false};
    std::vector<WideString> paths;
};

// Reads every argument into flags; the exit status when one ends the run
// (--help, --version, or one that is wrong).
std::optional<int> ReadFlags(const std::vector<std::u16string>& arguments, Flags& flags)
{
    bool optionsEnded = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::u16string& argument = arguments[i];
        const bool hasValue = i + 1 < arguments.size();
        if (optionsEnded || argument.size() < 2 || argument[0] != u'-') {
            flags.paths.emplace_back(argument);
        } else if (!IsCheckOption(argument)) {
            return UsageError("sondara-check: unknown option " + WideToUtf8(argument));
        } else if (argument == u"--version") {
            // The second line names the inner loops of the loudness this
            // processor runs (see VectorPath.h).
            WriteWholeToStandardOutput(WithLineEnd("sondara-check " SONDARA_VERSION_DOTTED "\nvector path: " +
                                                       std::string(VectorPathName(BestVectorPath())) + "\n",
                                                   platform::kLineEnd));
            return 0;
        } else if (argument == u"--help") {
            WriteWholeToStandardOutput(WithLineEnd(HelpText(), platform::kLineEnd));
            return 0;
        } else if (argument == u"--json" || argument == u"--jsonl" || argument == u"--csv") {
            flags.format = argument == u"--json" ? OutputFormat::Json
                         : argument == u"--jsonl" ? OutputFormat::JsonLines : OutputFormat::Csv;
            ++flags.formats;
        } else if (argument == u"--strict") {
            flags.strict = true;
        } else if (argument == u"-0") {
            flags.nulSeparated = true;
        } else if (argument.rfind(u"-j", 0) == 0) {
            const bool separate = argument.size() == 2;
            if (separate && !hasValue)
                return UsageError("sondara-check: -j needs a number of files to check at once");
            flags.jobs = ParseJobs(separate ? arguments[++i] : argument.substr(2));
            if (flags.jobs == 0)
                return UsageError("sondara-check: -j takes a number from 1 to 256");
        } else if (argument == u"--chunks") {
            flags.chunks = true;
        } else if (argument == u"--info") {
            flags.info = true;
        } else if (argument == u"--levels") {
            flags.levels = true;
        } else if (argument == u"--md5") {
            flags.md5 = true;
        } else if (argument == u"--loudness") {
            flags.loudness = true;
        } else if (argument == u"--target") {
            DeliveryTarget known;
            if (!hasValue || !FindDeliveryTarget(WideToUtf8(arguments[i + 1]), known))
                return UsageError("sondara-check: --target takes ebu-r128, atsc-a85 or streaming");
            flags.targetName = known.name;
            ++i;
        } else if (argument == u"--policy") {
            if (!hasValue)
                return UsageError("sondara-check: --policy needs a policy file or the name of a shipped one");
            std::string problem;
            flags.policy.emplace();
            if (!LoadPolicy(arguments[++i], *flags.policy, problem))
                return UsageError("sondara-check: " + problem);
        } else if (argument == u"--target-lufs" || argument == u"--tolerance" || argument == u"--max-true-peak") {
            const int which = argument == u"--target-lufs" ? 0 : argument == u"--tolerance" ? 1 : 2;
            if (!hasValue || !ParseDecibels(arguments[i + 1], flags.customFigures[which]))
                return UsageError("sondara-check: " + WideToUtf8(argument) + " takes a number");
            flags.customGiven[which] = true;
            ++i;
        } else if (const MeterOption* meter = FindMeterOption(argument)) {
            if (!hasValue || !meter->read(arguments[i + 1], flags.meters))
                return UsageError("sondara-check: " + WideToUtf8(argument) + " takes " + meter->takes);
            flags.meterOptions = true;
            ++i;
        } else if (argument == u"--tidy") {
            if (!hasValue)
                return UsageError("sondara-check: --tidy needs the path of the copy");
            flags.tidy = true;
            flags.tidyOutput = WideString(arguments[++i]);
        } else if (argument == u"--") {
            optionsEnded = true;
        } else {
            return UsageError("sondara-check: unknown option " + WideToUtf8(argument));
        }
    }
    return std::nullopt;
}

// The mode the flags make, and its options: the loudness and the targets
// are parts of the levels. The exit status when they don't go together.
std::optional<int> DecideMode(Flags& flags, CommandLine& line)
{
    const bool customTarget = flags.customGiven[0] || flags.customGiven[1] || flags.customGiven[2];
    const bool levels = flags.levels || flags.loudness || !flags.targetName.empty() || customTarget || flags.meterOptions;
    if (int{flags.chunks} + int{flags.info} + int{levels} + int{flags.tidy} > 1)
        return UsageError(kOneMode);
    if (flags.md5 && (flags.chunks || flags.info))
        return UsageError("sondara-check: --md5 goes alone, with --levels or with --tidy");
    if (flags.formats > 1)
        return UsageError("sondara-check: --json, --jsonl and --csv go one at a time");
    const bool measured = levels || (flags.md5 && !flags.tidy);
    line.mode = flags.chunks ? RunMode::Chunks
                : flags.info ? RunMode::Info
                : measured   ? RunMode::Levels
                : flags.tidy ? RunMode::Tidy
                             : RunMode::Check;
    LevelOptions& levelOptions = line.levelOptions;
    levelOptions.md5 = flags.md5;
    levelOptions.levels = levels;
    line.tidyMd5 = flags.md5;
    levelOptions.loudness = flags.loudness || !flags.targetName.empty() || customTarget;
    levelOptions.meters = flags.meters;
    levelOptions.strict = flags.strict;
    if (!flags.targetName.empty()) {
        FindDeliveryTarget(flags.targetName, levelOptions.target);
        levelOptions.hasTarget = true;
    }
    if (customTarget) {
        if (!flags.customGiven[0] || levelOptions.hasTarget)
            return UsageError("sondara-check: --target-lufs sets a target of your own, instead of --target");
        levelOptions.target = {"own", flags.customFigures[0], flags.customGiven[1] ? flags.customFigures[1] : 1.0,
                               flags.customGiven[2] ? flags.customFigures[2] : -1.0};
        levelOptions.hasTarget = true;
    }
    if (flags.policy && line.mode != RunMode::Check)
        return UsageError("sondara-check: --policy goes with the check only");
    if (flags.paths.empty())
        return UsageError("");
    if (line.mode != RunMode::Check && (flags.format == OutputFormat::JsonLines || flags.format == OutputFormat::Csv))
        return UsageError("sondara-check: --jsonl and --csv go with the check only");
    if (line.mode == RunMode::Tidy && flags.paths.size() != 1)
        return UsageError("sondara-check: --tidy copies one file at a time");
    line.format = flags.format;
    line.strict = flags.strict;
    line.policy = std::move(flags.policy);
    line.jobs = flags.jobs;
    line.nulSeparated = flags.nulSeparated;
    line.tidyOutput = std::move(flags.tidyOutput);
    line.paths = std::move(flags.paths);
    return std::nullopt;
}

} // namespace

// Reads the arguments into line. When the command line is the whole run
// (--help, --version, bad usage) gives its exit status, having written what
// it has to say; nothing when there is a run to make.
std::optional<int> ReadCommandLine(const std::vector<std::u16string>& arguments, CommandLine& line)
{
    Flags flags;
    if (const std::optional<int> status = ReadFlags(arguments, flags))
        return status;
    return DecideMode(flags, line);
}
