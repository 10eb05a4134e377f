#pragma once

#include <span>
#include <string>
#include <string_view>

// Every option of sondara-check, as data: the command line accepts only
// these spellings, --help lists them, and the tables of options in the
// documents are made from them (tools/DocTables.cpp).

// Where --help lists an option.
enum class HelpListing {
    OwnLine,
    // In brackets on the line of the option above it, whose figure it
    // qualifies: "--target-lufs X [--tolerance Y]".
    BesideTheOneAbove,
    // Not listed: --help itself, and "--".
    Unlisted,
};

struct CheckOption {
    const char* spelling;  // "--target", "-j"
    const char* argument;  // what follows it, "NAME" or "N"; empty for none
    // What it does, in English, with a line end where --help breaks the
    // line; the documents join the lines with a space.
    const char* summary;
    HelpListing listing;
};

// Every option, in the order --help lists them.
std::span<const CheckOption> CheckOptionTable();
// True when the argument is an option of the table, or "-j" with its
// number attached ("-j4").
bool IsCheckOption(std::u16string_view argument);

// The forms of the command line, each line ending in a line end.
std::string UsageText();
// The usage, what the checker does, every listed option and the exit
// status: all that --help prints.
std::string HelpText();
