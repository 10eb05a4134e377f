#include "app/ErrorText.h"
#include "app/ExceptionTranslator.h"
#include "platform/ThreadState.h"

#include <gtest/gtest.h>

#include <cstdint>

// The texts of the values the worker meets are followed end to end in the
// worker's tests; here, what lies outside them.
TEST(ErrorText, AnyOtherValueIsUndefined)
{
    for (std::int32_t value : {6, 7, -1}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(ErrorText(static_cast<Exception::ExceptionProcessor2Error>(value)), u"An undefined error occurred.");
    }
}

// Codes next to each other that the translator tells apart: the floating
// point and breakpoint codes it leaves to the catch-all, beside ones it
// translates.
TEST(ExceptionTranslation, NeighbouringCodesAndTheirValues)
{
    using namespace Exception;
    struct Case {
        std::uint32_t code;
        bool translated;
        ExceptionProcessor2Error value;
    };
    const Case cases[] = {
        {0xC000008C, true, MemoryAccess},    {0xC000008D, false, NoError}, {0xC000008E, true, OperationResult},
        {0xC0000090, true, Undefined},       {0xC0000093, false, NoError}, {0xC0000095, true, OperationResult},
        {0xC0000096, false, NoError},        {0x80000002, true, MemoryAccess}, {0x80000003, false, NoError},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << test.code);
        ExceptionProcessor2Error value = NoError;
        EXPECT_EQ(TranslateExceptionCode(test.code, value), test.translated);
        EXPECT_EQ(value, test.value);

        // The translator throws the same value, or returns, and keeps the
        // exception's data either way.
        bool thrown = false;
        try {
            TranslateStructuredException({test.code, 1, 0x1234, 3});
        } catch (ExceptionProcessor2Error caught) {
            thrown = true;
            EXPECT_EQ(caught, test.value);
        }
        EXPECT_EQ(thrown, test.translated);
        platform::FaultRecord kept;
        ASSERT_TRUE(GetLastStructuredException(kept));
        EXPECT_EQ(kept.code, test.code);
        EXPECT_EQ(kept.address, 0x1234u);
    }
}
