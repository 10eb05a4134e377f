#pragma once

#include "wave/BodyBytes.h"

#include <optional>
#include <string>

// The fields of an iXML document that the checker looks at, each the text
// of the first element of its name, blanks trimmed; the document is not
// otherwise parsed.
struct IxmlFields {
    BodySpan document;  // up to the first zero byte
    std::optional<std::string> fileSampleRate, timecodeRate, timecodeFlag, timestampSampleRate,
        timestampSamplesHigh, timestampSamplesLow;
};

IxmlFields ReadIxmlFields(BodySpan body);
// The whole number a field holds; nothing when it holds other than digits.
std::optional<std::uint64_t> IxmlNumber(const std::optional<std::string>& field);
