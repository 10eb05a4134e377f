#include "wave/IxmlFields.h"

#include <string_view>

namespace {

std::optional<std::string> ElementText(std::string_view document, std::string_view name)
{
    const std::string open = "<" + std::string(name) + ">";
    const std::size_t start = document.find(open);
    if (start == std::string_view::npos)
        return std::nullopt;
    const std::size_t from = start + open.size();
    const std::size_t end = document.find('<', from);
    if (end == std::string_view::npos)
        return std::nullopt;
    std::string_view text = document.substr(from, end - from);
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t' || text.front() == '\r' || text.front() == '\n'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r' || text.back() == '\n'))
        text.remove_suffix(1);
    return std::string(text);
}

} // namespace

IxmlFields ReadIxmlFields(BodySpan body)
{
    IxmlFields fields;
    fields.document = BodyText(body, 0, body.size());
    const std::string_view text(reinterpret_cast<const char*>(fields.document.data()), fields.document.size());
    fields.fileSampleRate = ElementText(text, "FILE_SAMPLE_RATE");
    fields.timecodeRate = ElementText(text, "TIMECODE_RATE");
    fields.timecodeFlag = ElementText(text, "TIMECODE_FLAG");
    fields.timestampSampleRate = ElementText(text, "TIMESTAMP_SAMPLE_RATE");
    fields.timestampSamplesHigh = ElementText(text, "TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI");
    fields.timestampSamplesLow = ElementText(text, "TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO");
    return fields;
}

std::optional<std::uint64_t> IxmlNumber(const std::optional<std::string>& field)
{
    if (!field || field->empty() || field->size() > 18)
        return std::nullopt;
    std::uint64_t value = 0;
    for (char c : *field) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + static_cast<std::uint64_t>(c - '0');
    }
    return value;
}
