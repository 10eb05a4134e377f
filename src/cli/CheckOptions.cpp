#include "cli/CheckOptions.h"

#include <algorithm>

namespace {

constexpr CheckOption kOptions[] = {
    {"--json", "", "one JSON array: path, report, hasError, findings and\nthe header facts", HelpListing::OwnLine},
    {"--jsonl", "", "one JSON object a line, and a summary line at the end", HelpListing::OwnLine},
    {"--csv", "", "one row a finding (UTF-8 with a byte order mark)", HelpListing::OwnLine},
    {"--strict", "", "warnings, and a policy's warns, count as findings for the\nexit status", HelpListing::OwnLine},
    {"--policy", "FILE",
     "hold each file to a delivery policy: a TOML file of rules, or\n"
     "the name of a shipped one (ebu-r128, atsc-a85, streaming, acx,\n"
     "podcast, archive-master, game-asset); a fail makes the exit\n"
     "status 1",
     HelpListing::OwnLine},
    {"-j", "N", "check N files at once (default: one a core)", HelpListing::OwnLine},
    {"-0", "",
     "the paths on standard input end in a zero byte, as\n"
     "find -print0 writes them, rather than a line end",
     HelpListing::OwnLine},
    {"--chunks", "",
     "list every chunk: offset, id, declared size, list type and\n"
     "INFO entries; marks a size that runs past an end",
     HelpListing::OwnLine},
    {"--info", "",
     "the metadata chunks: INFO (with the encoding of each text),\n"
     "bext, cue points and their labels, smpl, acid, cart, iXML",
     HelpListing::OwnLine},
    {"--levels", "",
     "per channel peak and RMS in dBFS, DC offset, samples at\n"
     "full scale, silence, clipping runs and noise floor, each\n"
     "stereo pair's correlation, and the duration (8 to 32-bit\n"
     "PCM, 32 and 64-bit float)",
     HelpListing::OwnLine},
    {"--silence-threshold", "DBFS", "--levels with silence below DBFS (default -60)", HelpListing::OwnLine},
    {"--silence-minimum", "MS",
     "--levels counting silent runs inside the audio of MS\n"
     "milliseconds or more (default 100)",
     HelpListing::OwnLine},
    {"--clipping-run", "N",
     "--levels counting runs of N or more equal samples at a\n"
     "channel's peak as clipping (default 3)",
     HelpListing::OwnLine},
    {"--loudness", "",
     "--levels with the loudness (integrated, range, momentary\n"
     "and short-term maximum) and each channel's true peak",
     HelpListing::OwnLine},
    {"--target", "NAME",
     "--loudness against ebu-r128, atsc-a85 or streaming;\n"
     "a miss makes the exit status 1",
     HelpListing::OwnLine},
    {"--target-lufs", "X",
     "a target of\n"
     "your own (default tolerance 1 LU, at most -1 dBTP)",
     HelpListing::OwnLine},
    {"--tolerance", "Y", "the tolerance of --target-lufs in LU (default 1)", HelpListing::BesideTheOneAbove},
    {"--max-true-peak", "Z", "the highest true peak of --target-lufs in dBTP (default -1)",
     HelpListing::BesideTheOneAbove},
    {"--md5", "",
     "the MD5 of the data chunk's bytes, beside the one an MD5\n"
     "chunk stores (match, mismatch or none stored); alone, in\n"
     "the same read as --levels, or with --tidy, which stores it\n"
     "in the copy",
     HelpListing::OwnLine},
    {"--tidy", "OUT",
     "write a mended copy of FILE to the new path OUT and say\n"
     "what changed; refused where anything would be lost",
     HelpListing::OwnLine},
    {"--version", "", "the version of sondara-check", HelpListing::OwnLine},
    {"--help", "", "the usage, a word on each option and the exit status", HelpListing::Unlisted},
    {"--", "", "every argument after it is a path, even one that begins with -", HelpListing::Unlisted},
};

constexpr char kUsage[] = "usage: sondara-check [--json | --jsonl | --csv] [--strict] [--policy FILE] [-j N] FILE...\n"
                          "       sondara-check [--json] [--chunks | --info | --levels [--loudness] [--target NAME]] FILE...\n"
                          "       sondara-check [--json] --tidy OUT FILE\n";
constexpr char kAbout[] = "Checks WAV files as the Sondara window does and prints a report for each,\n"
                          "followed by warnings of what the report leaves unsaid.\n"
                          "A FILE may be a folder (every .wav file below it, in sorted order) or -\n"
                          "(paths from standard input, one a line).\n";
constexpr char kExitStatus[] = "Exit status:\n"
                               "  0  every report is clear (warnings alone too, unless --strict)\n"
                               "  1  a report has a finding, a path can't be read, a policy fails, or\n"
                               "     with --strict a file has a warning or a policy warns; a file can't\n"
                               "     be listed, measured, hashed or copied; an MD5 does not match\n"
                               "  2  bad usage\n"
                               "A folder, or standard input, that gives no file to check is said on\n"
                               "standard error, and makes the exit status 1.\n";

// The words of --help's option list start in this column; an option wider
// than the column leaves three spaces before them instead.
constexpr std::size_t kSummaryColumn = 14;

std::string Spelled(const CheckOption& option)
{
    return *option.argument ? std::string(option.spelling) + " " + option.argument : option.spelling;
}

// "  --tidy OUT  write a mended copy ...", each further line of the summary
// indented to the column.
std::string OptionListing()
{
    std::string listing;
    for (std::size_t i = 0; i < std::size(kOptions); ++i) {
        if (kOptions[i].listing != HelpListing::OwnLine)
            continue;
        std::string head = "  " + Spelled(kOptions[i]);
        for (std::size_t j = i + 1; j < std::size(kOptions) && kOptions[j].listing == HelpListing::BesideTheOneAbove; ++j)
            head += " [" + Spelled(kOptions[j]) + "]";
        head += head.size() + 2 <= kSummaryColumn ? std::string(kSummaryColumn - head.size(), ' ') : "   ";
        listing += head;
        for (const char* c = kOptions[i].summary; *c; ++c) {
            listing += *c;
            if (*c == '\n')
                listing += std::string(kSummaryColumn, ' ');
        }
        listing += '\n';
    }
    return listing;
}

} // namespace

std::span<const CheckOption> CheckOptionTable()
{
    return kOptions;
}

bool IsCheckOption(std::u16string_view argument)
{
    for (const CheckOption& option : kOptions) {
        const std::string_view spelling = option.spelling;
        if (argument.size() < spelling.size() || !std::equal(spelling.begin(), spelling.end(), argument.begin()))
            continue;
        // Only a short option, "-j", may have its argument attached.
        if (argument.size() == spelling.size() || (spelling.size() == 2 && *option.argument))
            return true;
    }
    return false;
}

std::string UsageText()
{
    return kUsage;
}

std::string HelpText()
{
    return kUsage + (kAbout + OptionListing()) + kExitStatus;
}
