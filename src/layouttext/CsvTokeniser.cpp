#include "layouttext/CsvTokeniser.h"

namespace {

enum class ScanState { OutsideQuotes, InsideQuotes, AfterEscape };

bool IsOneOf(const WideString& units, char16_t unit)
{
    return units.Find(unit) != WideString::npos;
}

bool IsLineEnd(char16_t unit)
{
    return unit == u'\r' || unit == u'\n';
}

} // namespace

// Separators ",", quotes "\"", escapes "\\", and the comments "//" to the end
// of the line and "/*" to "*/", in this order.
CsvTokeniser::CsvTokeniser()
    : separators(u","), quotes(u"\""), escapes(u"\\")
{
    comments.Add({WideString(u"//"), WideString(u"\n")});
    comments.Add({WideString(u"/*"), WideString(u"*/")});
}

// Replaces rows by the rows and items of text. False, with no rows, for an
// empty text. A text that holds nothing but comments is not empty: it parses
// to no rows and gives true, so that a reader of the first row finds no item.
bool CsvTokeniser::Parse(const WideString& text)
{
    rows.Clear();
    if (text.IsEmpty())
        return false;
    WideString rest = RemoveComments(text);
    std::u16string_view view = rest.View();
    // Every LF ends a row, and a last row without one runs to the end of the
    // text; a text that comment removal left empty has no row at all.
    for (std::size_t start = 0; start < view.size();) {
        std::size_t lineFeed = view.find(u'\n', start);
        std::size_t end = lineFeed == std::u16string_view::npos ? view.size() : lineFeed;
        rows.Add(ScanRow(view.substr(start, end - start)));
        start = end + 1;
    }
    if (dropEmpty) {
        for (std::size_t i = rows.Count(); i-- > 0;) {
            if (rows.At(i).IsEmpty())
                rows.RemoveAt(i);
        }
    }
    return true;
}

// The first row of the last parse, or a shared empty row when there is none.
const CsvRow& CsvTokeniser::GetFirstRow() const
{
    static const CsvRow emptyRow;
    return rows.IsEmpty() ? emptyRow : rows.At(0);
}

// Cuts out, pair by pair in list order, every stretch from an open string to
// the end of the next close string, searched from the open string itself on.
// The close string goes with the stretch, so a "//" comment takes its LF and
// joins the next line to the text before it. An open string with no close
// string behind it is not a comment: that stretch stays in the text and the
// pair is done. This keeps a "//" in a one-line value such as an address
// intact, and no hit is ever searched twice.
WideString CsvTokeniser::RemoveComments(const WideString& text) const
{
    WideString result = text;
    for (const CsvComment& comment : comments) {
        if (comment.open.IsEmpty() || comment.close.IsEmpty())
            continue;
        std::u16string_view view = result.View();
        WideString kept;
        std::size_t keptFrom = 0;
        bool removed = false;
        for (std::size_t hit = view.find(comment.open.View()); hit != std::u16string_view::npos;) {
            std::size_t close = view.find(comment.close.View(), hit);
            if (close == std::u16string_view::npos)
                break;
            kept.Append(view.substr(keptFrom, hit - keptFrom));
            keptFrom = close + comment.close.Length();
            removed = true;
            hit = view.find(comment.open.View(), keptFrom);
        }
        if (removed) {
            kept.Append(view.substr(keptFrom));
            result = kept;
        }
    }
    return result;
}

// The items of one row. A quote toggles quoting wherever it stands and is
// dropped; inside quotes separators are text and escapes work. A CR or LF
// ends the row and keeps the item even when it is empty, while the end of the
// text keeps only a non-empty item: "a," has one item and "a," with a CR
// behind it two.
CsvRow CsvTokeniser::ScanRow(std::u16string_view text) const
{
    CsvRow row;
    WideString item;
    ScanState state = ScanState::OutsideQuotes;
    for (char16_t unit : text) {
        bool lineEnd = false;
        switch (state) {
        case ScanState::OutsideQuotes:
            if (IsOneOf(separators, unit)) {
                if (!dropEmpty || !item.IsEmpty()) {
                    row.Add(item);
                    item.Clear();
                }
            } else if (IsOneOf(quotes, unit)) {
                state = ScanState::InsideQuotes;
            } else if (IsLineEnd(unit)) {
                lineEnd = true;
            } else {
                item += unit;
            }
            break;
        case ScanState::InsideQuotes:
            if (IsOneOf(escapes, unit)) {
                state = ScanState::AfterEscape;
            } else if (IsOneOf(quotes, unit)) {
                state = ScanState::OutsideQuotes;
            } else if (IsLineEnd(unit)) {
                state = ScanState::OutsideQuotes;
                lineEnd = true;
            } else {
                item += unit;
            }
            break;
        case ScanState::AfterEscape:
            if (IsOneOf(escapes, unit))
                item += unit;
            else if (unit == u'n')
                item += u'\n';
            else if (unit == u'r')
                item += u'\r';
            else if (unit == u't')
                item += u'\t';
            else if (IsOneOf(quotes, unit))
                item += unit;
            state = ScanState::InsideQuotes;
            break;
        }
        // With dropEmpty an empty item doesn't end the row, and scanning goes
        // on behind the line end.
        if (lineEnd && (!dropEmpty || !item.IsEmpty())) {
            row.Add(item);
            return row;
        }
    }
    if (!item.IsEmpty())
        row.Add(item);
    return row;
}
