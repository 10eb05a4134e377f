#pragma once

#include "check/FileCheck.h"
#include "policy/FileFacts.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A figure a measure gives: a number, or a word for the measures that
// name something ("riff", "pcm").
struct Figure {
    double number = 0;
    std::string word;
};

// What a measure is read from for one file.
struct MeasureInput {
    const FileCheck& check;
    const FileFacts& facts;
    const std::string& code; // the finding code of a rule over one code
};

// One measure that rules can name. Every measure is one row of the table
// in PolicyMeasure.cpp: its name, its unit, how deep into the file it
// reads, and how its figures are read. A new meter's figure becomes a
// policy measure by adding its row there.
struct PolicyMeasure {
    const char* name;
    const char* unit;    // empty for counts and words
    FactDepth depth;
    int decimals;        // figures are judged as printed, to this many decimals
    bool perChannel;
    // The figures, one a channel for a measure per channel; none when the
    // file doesn't give the measure.
    std::optional<std::vector<Figure>> (*read)(const MeasureInput& input);
};

// The measure of a name; null for none.
const PolicyMeasure* FindPolicyMeasure(std::string_view name);
// Every name, for messages: "container, format, ...".
std::string PolicyMeasureNames();
