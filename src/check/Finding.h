#pragma once

#include "base/WideString.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// What the command-line checker says of a file, as data: each line of the
// check's report is an error, and what the check leaves unsaid is a warning.
// Every kind of finding has a stable code and one row in the table of
// Finding.cpp, which holds its texts in both languages and what to do.

enum class Severity { Error, Warning };

struct FindingKind {
    const char* code;      // a stable dotted name, e.g. "format.not-pcm"
    Severity severity;
    const char16_t* text;  // the Japanese line, without its values
    const char* message;   // the same in English
    const char* advice;    // what to do about it, in English
};

struct Finding {
    const FindingKind* kind = nullptr;
    std::string message;   // English, with the values
    WideString text;       // the Japanese line as printed, no line end
    std::optional<std::int64_t> value;    // the value of a report line
    std::optional<std::int64_t> offset;   // where the chunk it is about begins
    std::string chunk;                    // the id of the chunk there
    std::optional<std::int64_t> declared; // what the header says
    std::optional<std::int64_t> actual;   // what the file holds
};

// Every kind, errors in the order the check reports them, then warnings.
const FindingKind* FindingKinds(std::size_t& count);
// The kind of a code; null for none.
const FindingKind* FindFindingKind(std::string_view code);
const char* SeverityName(Severity severity);

// The Japanese text of a report line of the check, by code.
const char16_t* ReportLineText(std::string_view code);

// A figure that a finding gives beside the declared and actual ones, with
// its label in each language.
struct FindingFigure {
    const char16_t* label;
    const char* english;
    std::int64_t value;
};

// A finding of a kind, its message and text made from the kind's and the
// figures given.
Finding MakeFinding(const FindingKind& kind, std::optional<std::int64_t> offset, const std::string& chunk,
                    std::optional<std::int64_t> declared, std::optional<std::int64_t> actual,
                    std::span<const FindingFigure> more = {});
