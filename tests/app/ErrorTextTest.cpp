#include "app/ErrorText.h"
#include "app/ExceptionTranslator.h"
#include "platform/SystemError.h"
#include "platform/ThreadState.h"
#include "support/WorkerTestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>

TEST(ErrorText, EachValueAndAnyOther)
{
    struct Case {
        std::int32_t value;
        const char16_t* text;
    };
    const Case cases[] = {
        {0, u"It ended normally."},
        {1, u"The memory allocating error occurred."},
        {2, u"The memory unlawful computer access error occurred."},
        {3, u"The operation result error occurred."},
        {4, u"The algorithm error occurred."},
        {5, u"OS error occurred."},
        {6, u"An undefined error occurred."},
        {7, u"An undefined error occurred."},
        {-1, u"An undefined error occurred."},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.value);
        EXPECT_EQ(ErrorText(static_cast<Exception::ExceptionProcessor2Error>(test.value)), test.text);
    }
}

TEST(ExceptionTranslation, CodesAndTheirValues)
{
    using namespace Exception;
    struct Case {
        std::uint32_t code;
        bool translated;
        ExceptionProcessor2Error value;
    };
    const Case cases[] = {
        {0x80000002, true, MemoryAccess},      {0xC0000005, true, MemoryAccess},
        {0xC0000008, true, MemoryAccess},      {0xC000008C, true, MemoryAccess},
        {0xC000008E, true, OperationResult},   {0xC000008F, true, OperationResult},
        {0xC0000091, true, OperationResult},   {0xC0000092, true, OperationResult},
        {0xC0000094, true, OperationResult},   {0xC0000095, true, OperationResult},
        {0xC0000090, true, Undefined},         {0xC0000025, true, Algorithm},
        {0xC00000FD, true, Algorithm},         {0xC0000194, true, Algorithm},
        {0x80000001, true, OperatingSystem},   {0xC0000006, true, OperatingSystem},
        {0xC000001D, true, OperatingSystem},   {0xC0000026, true, OperatingSystem},
        // Denormal operand, underflow, a privileged instruction, a breakpoint.
        {0xC000008D, false, NoError},          {0xC0000093, false, NoError},
        {0xC0000096, false, NoError},          {0x80000003, false, NoError},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << test.code);
        ExceptionProcessor2Error value = NoError;
        EXPECT_EQ(TranslateExceptionCode(test.code, value), test.translated);
        EXPECT_EQ(value, test.value);

        // The translator throws the same value, or returns, and keeps the
        // exception's data either way.
        const platform::FaultRecord fault{test.code, 1, 0x1234, 3};
        bool thrown = false;
        try {
            TranslateStructuredException(fault);
        } catch (ExceptionProcessor2Error caught) {
            thrown = true;
            EXPECT_EQ(caught, test.value);
        }
        EXPECT_EQ(thrown, test.translated);
        platform::FaultRecord kept;
        ASSERT_TRUE(GetLastStructuredException(kept));
        EXPECT_EQ(kept.code, test.code);
        EXPECT_EQ(kept.flags, 1u);
        EXPECT_EQ(kept.address, 0x1234u);
        EXPECT_EQ(kept.parameterCount, 3u);
    }
}

TEST(ErrorText, SystemTextWithTheExceptionData)
{
    TranslateStructuredException({0xC000008D, 0x1, 0x89ABCDEF, 0x10});
    platform::SetLastErrorCode(5);
    const WideString text = SystemErrorText();
    const std::u16string address = sizeof(std::uintptr_t) == 8 ? u"0000000089ABCDEF" : u"89ABCDEF";
    EXPECT_EQ(text.ToU16String(), platform::SystemErrorMessage(5) + u"\nExceptionCode: C000008D, ExceptionFlags: 00000001, "
                                                                      u"ExceptionAddress: " +
                                      address + u", NumberParameters: 00000010\n");
    EXPECT_FALSE(platform::SystemErrorMessage(5).empty());
}
