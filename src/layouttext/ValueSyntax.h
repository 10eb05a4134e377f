#pragma once

#include "base/WideString.h"

#include <cstdint>
#include <string_view>

// The value syntax of layout texts on plain strings: escapes, alignment
// words, comma lists with quotes, and the number scans that the typed reads
// of AttributeMap share. Free functions without state.

WideString Unescape(const WideString& text);
std::int32_t ParseAlign(const WideString& text);

// The items of one value text, apart from any map. The count only looks at
// commas; the items come from a CsvTokeniser and honour its quotes, escapes
// and comments.
std::int32_t CountCsvItems(const WideString& text);
bool GetCsvItem(const WideString& text, std::int32_t index, WideString& item);
float GetCsvFloat(const WideString& text, float defaultValue);

// Number scans from the start of a text; what doesn't scan gives 0.
std::uint32_t ScanHex(std::u16string_view text);
std::int32_t ScanDecimalInt(std::u16string_view text);
double ScanDouble(std::u16string_view text);
// ScanDouble narrowed to float.
float ScanFloat(std::u16string_view text);
