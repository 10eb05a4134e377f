#pragma once

#include "base/Array.h"
#include "base/WideString.h"

#include <string_view>

using CsvRow = Array<WideString>;

// A stretch of text that is cut out before rows and items are looked at:
// from an open string to the end of the following close string.
struct CsvComment {
    WideString open;
    WideString close;
};

// A small row and column parser with quotes, escapes and comments, for value
// texts that widgets take apart. Its settings are open fields; a caller makes
// one on the stack, changes what it needs and parses. One thread at a time.
class CsvTokeniser {
public:
    CsvTokeniser();

    bool Parse(const WideString& text);
    const CsvRow& GetFirstRow() const;

    // The result of the last parse.
    Array<CsvRow> rows;
    // Each a list of code units.
    WideString separators;
    WideString quotes;
    WideString escapes;
    // Removed in this order, each pair over the text the previous one left.
    Array<CsvComment> comments;
    // Ignore empty items and rows without items.
    bool dropEmpty = false;

private:
    WideString RemoveComments(const WideString& text) const;
    CsvRow ScanRow(std::u16string_view text) const;
};
