#include "layouttext/ValueSyntax.h"

#include "layouttext/CsvTokeniser.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <system_error>

// The scans below read only ASCII units and never consult the process's
// locale: a decimal point is always '.', and blanks are the six of the C
// locale (space, TAB, LF, VT, FF, CR).
//
// Integer scans wrap on overflow: digits accumulate modulo 2^32 and a minus
// sign negates modulo 2^32, as the Windows runtime's scanf does with "%x"
// and "%d" into 32-bit targets. So "1FFFFFFFF" reads as FFFFFFFF, "100000000" as 0,
// and "-1" as FFFFFFFF; an endless string of digits costs time, never
// an overflow.

namespace {

bool IsBlank(char16_t unit)
{
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

bool IsDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

int HexDigitValue(char16_t unit)
{
    if (unit >= u'0' && unit <= u'9')
        return unit - u'0';
    if (unit >= u'a' && unit <= u'f')
        return unit - u'a' + 10;
    if (unit >= u'A' && unit <= u'F')
        return unit - u'A' + 10;
    return -1;
}

std::size_t SkipBlanks(std::u16string_view text)
{
    std::size_t at = 0;
    while (at < text.size() && IsBlank(text[at]))
        ++at;
    return at;
}

// Takes an optional sign at `at`; true for a minus.
bool TakeSign(std::u16string_view text, std::size_t& at)
{
    if (at >= text.size() || (text[at] != u'+' && text[at] != u'-'))
        return false;
    return text[at++] == u'-';
}

// A decimal text that std::from_chars found out of range is either too large
// or too small for a double. The decimal exponent of its first significant
// digit tells which; the exponent is saturated, so any length of digits is
// safe.
double OutOfRangeValue(const std::string& number)
{
    std::size_t point = number.find('.');
    std::size_t mark = number.find_first_of("eE");
    std::size_t mantissaEnd = mark == std::string::npos ? number.size() : mark;
    std::size_t integerDigits = std::min(point, mantissaEnd);
    std::size_t first = number.find_first_of("123456789");
    if (first >= mantissaEnd)
        return 0.0;
    std::int64_t leadExponent = first < integerDigits ? static_cast<std::int64_t>(integerDigits - first) - 1
                                                      : -static_cast<std::int64_t>(first - integerDigits);
    constexpr std::int64_t kSaturated = 1000000000;
    std::int64_t exponent = 0;
    if (mark != std::string::npos) {
        std::size_t at = mark + 1;
        bool negative = number[at] == '-';
        if (negative)
            ++at;
        for (; at < number.size(); ++at)
            exponent = std::min(exponent * 10 + (number[at] - '0'), kSaturated);
        if (negative)
            exponent = -exponent;
    }
    return leadExponent + exponent >= 0 ? HUGE_VAL : 0.0;
}

} // namespace

// Resolves the escapes of a text value. An unescaped quote vanishes; a
// backslash followed by a quote, a backslash, n, r or t writes that quote,
// backslash, LF, CR or TAB; before any other character the backslash stays;
// a backslash at the very end writes nothing. A text without quotes and
// backslashes comes back as it is, sharing its characters.
WideString Unescape(const WideString& text)
{
    std::u16string_view view = text.View();
    if (view.find_first_of(u"\"\\") == std::u16string_view::npos)
        return text;
    WideString result;
    bool afterBackslash = false;
    for (char16_t unit : view) {
        if (afterBackslash) {
            afterBackslash = false;
            switch (unit) {
            case u'"':
            case u'\\':
                result += unit;
                break;
            case u'n':
                result += u'\n';
                break;
            case u'r':
                result += u'\r';
                break;
            case u't':
                result += u'\t';
                break;
            default:
                result += u'\\';
                result += unit;
                break;
            }
        } else if (unit == u'\\') {
            afterBackslash = true;
        } else if (unit != u'"') {
            result += unit;
        }
    }
    return result;
}

// 2 for the far side ("R" or "B"), 1 for the centre ("C"), 0 for the near
// side, which is every other text.
std::int32_t ParseAlign(const WideString& text)
{
    if (text == u"R" || text == u"B")
        return 2;
    if (text == u"C")
        return 1;
    return 0;
}

// 0 for the empty text, else the commas plus 1. Quotes are not looked at, so
// the count can be higher than what GetCsvItem finds.
std::int32_t CountCsvItems(const WideString& text)
{
    if (text.IsEmpty())
        return 0;
    return static_cast<std::int32_t>(std::count(text.View().begin(), text.View().end(), u',')) + 1;
}

// Item index of the first row of text, as a CsvTokeniser with its default
// settings parses it. False, with item untouched, when there is no row or no
// such item.
bool GetCsvItem(const WideString& text, std::int32_t index, WideString& item)
{
    CsvTokeniser tokeniser;
    if (index < 0 || !tokeniser.Parse(text))
        return false;
    const CsvRow& row = tokeniser.GetFirstRow();
    if (static_cast<std::size_t>(index) >= row.Count())
        return false;
    item = row.At(static_cast<std::size_t>(index));
    return true;
}

// Item 0 of text read as a decimal number; defaultValue when there is none.
float GetCsvFloat(const WideString& text, float defaultValue)
{
    WideString item;
    if (!GetCsvItem(text, 0, item))
        return defaultValue;
    return ScanFloat(item.View());
}

// Like "%x": blanks, an optional sign, an optional 0x or 0X, then hex digits
// up to the first other unit. 0 when no digit comes.
std::uint32_t ScanHex(std::u16string_view text)
{
    std::size_t at = SkipBlanks(text);
    bool negative = TakeSign(text, at);
    if (at + 1 < text.size() && text[at] == u'0' && (text[at + 1] == u'x' || text[at + 1] == u'X'))
        at += 2;
    std::uint32_t value = 0;
    for (int digit; at < text.size() && (digit = HexDigitValue(text[at])) >= 0; ++at)
        value = value * 16 + static_cast<std::uint32_t>(digit);
    return negative ? 0u - value : value;
}

// Blanks, an optional sign, then decimal digits up to the first other unit.
// 0 when no digit comes.
std::int32_t ScanDecimalInt(std::u16string_view text)
{
    std::size_t at = SkipBlanks(text);
    bool negative = TakeSign(text, at);
    std::uint32_t value = 0;
    for (; at < text.size() && IsDigit(text[at]); ++at)
        value = value * 10 + static_cast<std::uint32_t>(text[at] - u'0');
    return static_cast<std::int32_t>(negative ? 0u - value : value);
}

// Like strtod on decimal text: blanks, an optional sign, digits with an
// optional point, and an exponent that counts only when a digit follows the
// e. The double is correctly rounded; too large a text gives infinity and too
// small a one 0, and the narrowing to float rounds as the hardware does, so
// beyond the range of a float it gives infinity too. Hexadecimal floats and
// the words inf and nan are not decimal text and read as 0; the older
// Windows runtimes don't read them either.
double ScanDouble(std::u16string_view text)
{
    std::size_t at = SkipBlanks(text);
    bool negative = TakeSign(text, at);
    std::string number;
    std::size_t digits = 0;
    for (; at < text.size() && IsDigit(text[at]); ++at, ++digits)
        number.push_back(static_cast<char>(text[at]));
    if (at < text.size() && text[at] == u'.') {
        number.push_back('.');
        for (++at; at < text.size() && IsDigit(text[at]); ++at, ++digits)
            number.push_back(static_cast<char>(text[at]));
    }
    if (digits == 0)
        return 0.0;
    if (at < text.size() && (text[at] == u'e' || text[at] == u'E')) {
        std::size_t exponentAt = at + 1;
        bool negativeExponent = TakeSign(text, exponentAt);
        if (exponentAt < text.size() && IsDigit(text[exponentAt])) {
            number += negativeExponent ? "e-" : "e";
            for (; exponentAt < text.size() && IsDigit(text[exponentAt]); ++exponentAt)
                number.push_back(static_cast<char>(text[exponentAt]));
        }
    }
    double value = 0.0;
    std::errc error = std::from_chars(number.data(), number.data() + number.size(), value).ec;
    if (error == std::errc::result_out_of_range)
        value = OutOfRangeValue(number);
    else if (error != std::errc())
        value = 0.0;
    return negative ? -value : value;
}

float ScanFloat(std::u16string_view text)
{
    return static_cast<float>(ScanDouble(text));
}
