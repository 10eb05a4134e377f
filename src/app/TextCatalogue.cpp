#include "app/TextCatalogue.h"

namespace {

const WideString kTextSection = u"Text";

} // namespace

TextCatalogue& TextCatalogue::Instance()
{
    static TextCatalogue catalogue;
    return catalogue;
}

// Nothing loads the process-wide document, so this gives back the key; the
// lookup is the place where translated texts would come in.
WideString TextCatalogue::Lookup(const WideString& key)
{
    TextCatalogue& catalogue = Instance();
    platform::LockGuard guard(catalogue.lock);
    return LookupIn(catalogue.document, key);
}

// The value of key in the first section named Text, or key itself when
// there is no such section or the section has no such key. A value is
// unescaped, so that a text can spell its line ends as \r\n.
WideString TextCatalogue::LookupIn(const LayoutDocument& document, const WideString& key)
{
    for (std::int32_t index = 0; index < document.GetSectionCount(); ++index) {
        if (document.GetSectionName(index) == kTextSection)
            return document.GetSectionMap(index).GetValue(key, key, true);
    }
    return key;
}
