#pragma once

#include "wave/FileLayout.h"

#include <cstdint>
#include <optional>
#include <string>

// What a file's header says of its audio, read from the header alone, so
// that a manifest of many files costs no read of their samples. A fact the
// header can't tell (no format chunk, no data chunk, a rate of 0) is left
// empty rather than guessed.
struct FormatFacts {
    FileContainer container = FileContainer::Neither;
    std::optional<std::uint16_t> formatTag;
    // An extensible format's sub-format GUID in its usual text form.
    std::optional<std::string> subFormat;
    std::optional<std::uint32_t> sampleRate;
    std::optional<std::uint16_t> channels;
    std::optional<std::uint16_t> bits;
    std::optional<std::uint16_t> blockAlign;
    // Whole frames as a reader takes them: those both declared and present,
    // or all the file holds behind a placeholder size of 0. A size past the
    // end of the file counts no frame that isn't there. Empty for a
    // compressed format, whose blocks are not frames.
    std::optional<std::int64_t> frames;
    std::optional<double> seconds;
};

// Reads the facts from a layout walked with its RF64 layout read after the
// walk, as kLevelsReading reads it.
FormatFacts ReadFormatFacts(FileLayout& layout);

// "riff", "rf64", or empty for neither.
const char* ContainerName(FileContainer container);
