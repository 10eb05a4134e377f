// The row and column parser and the item reads on arbitrary text, as UTF-16
// units from pairs of bytes.
#include "layouttext/CsvTokeniser.h"
#include "layouttext/ValueSyntax.h"

#include "FuzzInput.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const WideString text(UnitsFromBytes(data, size));

    CsvTokeniser tokeniser;
    if (tokeniser.Parse(text) == text.IsEmpty())
        FailInvariant("Parse is false exactly for the empty text");
    const CsvRow& first = tokeniser.GetFirstRow();

    // GetCsvItem sees the first row of a fresh parse. Each call parses the
    // whole text, so only the first and last few items and the one behind
    // the end are compared: all of them would make a run quadratic.
    const std::size_t count = first.Count();
    for (std::size_t i = 0; i <= count; ++i) {
        if (i == 4 && count > 8)
            i = count - 4;
        WideString item;
        const bool found = GetCsvItem(text, static_cast<std::int32_t>(i), item);
        if (found != (i < count))
            FailInvariant("GetCsvItem disagrees with the first row's length");
        if (found && !(item == first.At(i)))
            FailInvariant("GetCsvItem disagrees with the first row");
    }
    WideString item;
    if (GetCsvItem(text, -1, item))
        FailInvariant("a negative index gives an item");

    std::int32_t commas = 0;
    for (char16_t unit : text.View())
        commas += unit == u',';
    if (CountCsvItems(text) != (text.IsEmpty() ? 0 : commas + 1))
        FailInvariant("CountCsvItems is not the commas plus one");

    CsvTokeniser dropping;
    dropping.dropEmpty = true;
    dropping.Parse(text);
    for (const CsvRow& row : dropping.rows) {
        if (row.IsEmpty())
            FailInvariant("dropEmpty keeps an empty row");
        for (const WideString& cell : row) {
            if (cell.IsEmpty())
                FailInvariant("dropEmpty keeps an empty item");
        }
    }
    GetCsvFloat(text, 1.5f);
    return 0;
}
