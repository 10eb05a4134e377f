#include "base/TextFormat.h"

#include <cassert>
#include <cmath>
#include <cstdio>

void AppendJsonString(std::string& out, std::u16string_view text)
{
    out += '"';
    for (char16_t unit : text) {
        switch (unit) {
        case u'"': out += "\\\""; break;
        case u'\\': out += "\\\\"; break;
        case u'\r': out += "\\r"; break;
        case u'\n': out += "\\n"; break;
        case u'\t': out += "\\t"; break;
        default:
            if (unit >= 0x20 && unit < 0x7F) {
                out += static_cast<char>(unit);
            } else {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(unit));
                out += escape;
            }
        }
    }
    out += '"';
}

std::string CsvField(std::string_view text)
{
    std::string out = "\"";
    if (!text.empty() && (text[0] == '=' || text[0] == '+' || text[0] == '-' || text[0] == '@' || text[0] == '\t' ||
                          text[0] == '\r'))
        out += '\'';
    for (char c : text) {
        out += c;
        if (c == '"')
            out += '"';
    }
    return out + "\"";
}

std::string ChunkIdText(std::uint32_t id)
{
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto byte = static_cast<unsigned char>(id >> shift);
        if (byte >= 0x20 && byte < 0x7F) {
            text += static_cast<char>(byte);
        } else {
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\x%02X", byte);
            text += escape;
        }
    }
    return text;
}

std::string FormatCount(std::int64_t value)
{
    const bool negative = value < 0;
    std::uint64_t magnitude = negative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    std::string digits;
    int inGroup = 0;
    do {
        if (inGroup == 3) {
            digits.insert(digits.begin(), ',');
            inGroup = 0;
        }
        digits.insert(digits.begin(), static_cast<char>('0' + magnitude % 10));
        magnitude /= 10;
        ++inGroup;
    } while (magnitude > 0);
    return negative ? "-" + digits : digits;
}

std::string FormatFixed(double value, int decimals)
{
    assert(std::isfinite(value));
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value < 0 ? "-inf" : "inf";
    const double scale = std::pow(10.0, decimals);
    const double scaled = std::round(std::fabs(value) * scale);
    // Past 2^64 units the digits don't fit the integer below; such figures
    // come only from hostile floats, and the C library's digits do.
    if (scaled >= 18446744073709551616.0) {
        char text[400];
        std::snprintf(text, sizeof text, "%.*f", decimals, value);
        return text;
    }
    auto units = static_cast<std::uint64_t>(scaled);
    const auto divisor = static_cast<std::uint64_t>(scale);
    std::string text = std::to_string(units / divisor);
    if (decimals > 0) {
        std::string fraction = std::to_string(units % divisor);
        text += "." + std::string(static_cast<std::size_t>(decimals) - fraction.size(), '0') + fraction;
    }
    return value < 0 && units > 0 ? "-" + text : text;
}
