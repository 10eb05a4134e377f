#include "app/TextCatalogue.h"

#include <gtest/gtest.h>

TEST(TextCatalogue, NothingLoadedGivesTheKey)
{
    const WideString key = u"The operation result error occurred.";
    EXPECT_EQ(TextCatalogue::Lookup(key), key);
    EXPECT_EQ(TextCatalogue::Lookup(u"\r\n"), u"\r\n");
    EXPECT_EQ(TextCatalogue::Lookup(WideString()), u"");
}

TEST(TextCatalogue, LookupInTheFirstTextSection)
{
    struct Case {
        const char16_t* document;
        const char16_t* key;
        const char16_t* expected;
    };
    const Case cases[] = {
        {u"", u"Hello", u"Hello"},
        {u"[Other]\r\nHello=Wrong section\r\n", u"Hello", u"Hello"},
        {u"[Text]\r\nHello=Bonjour\r\n", u"Hello", u"Bonjour"},
        {u"[Text]\r\nHello=Bonjour\r\n", u"hello", u"hello"},
        {u"[Other]\r\nHello=No\r\n[Text]\r\nHello=Yes\r\n", u"Hello", u"Yes"},
        // Only the first section of the name counts, also when it lacks the key.
        {u"[Text]\r\nHello=First\r\n[Text]\r\nHello=Second\r\n", u"Hello", u"First"},
        {u"[Text]\r\nOther=x\r\n[Text]\r\nHello=Second\r\n", u"Hello", u"Hello"},
        // Names are exact.
        {u"[text]\r\nHello=Lower\r\n", u"Hello", u"Hello"},
        // Values are unescaped, so a text can hold its own line ends.
        {u"[Text]\r\nBreak=\"a\\r\\nb\"\r\n", u"Break", u"a\r\nb"},
        {u"[Text]\r\nEmpty=\r\n", u"Empty", u""},
    };
    int index = 0;
    for (const Case& test : cases) {
        SCOPED_TRACE(index++);
        LayoutDocument document;
        document.Parse(test.document);
        EXPECT_EQ(TextCatalogue::LookupIn(document, test.key), test.expected);
    }
}
