// The worker with the faults that only Windows raises on demand.
#include "app/ExceptionTranslator.h"
#include "app/WorkerThread.h"
#include "platform/FaultTranslation.h"
#include "support/FailureBoxProbe.h"
#include "support/WorkerTestSupport.h"

#include <gtest/gtest.h>

#include <windows.h>

using namespace worker_test;

namespace {

class Raising {
public:
    explicit Raising(DWORD code) : code(code) {}

    void Run(WorkerThread*)
    {
        SetLastError(kTargetLastError);
        RaiseException(code, 0, 0, nullptr);
        reachedEnd = true;
    }

    DWORD code;
    bool reachedEnd = false;
};

} // namespace

TEST(WorkerThreadWin32, RaisedExceptionsAreTranslatedByTheirCode)
{
    struct Case {
        DWORD code;
        std::u16string_view firstPiece;
    };
    const Case cases[] = {
        {EXCEPTION_FLT_UNDERFLOW, kCancelled},
        {EXCEPTION_STACK_OVERFLOW, u"The algorithm error occurred."},
        {EXCEPTION_IN_PAGE_ERROR, u"OS error occurred."},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << test.code);
        Raising target(test.code);
        const FailureBox box = RunToBox(target);
        EXPECT_FALSE(target.reachedEnd);
        platform::FaultRecord fault;
        ASSERT_TRUE(GetLastStructuredException(fault));
        EXPECT_EQ(fault.code, test.code);
        EXPECT_EQ(fault.parameterCount, 0u);
        EXPECT_EQ(box.text, FailureText(test.firstPiece, kTargetLastError, ExceptionDataLine(fault)));
    }
}
