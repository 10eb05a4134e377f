// Alone in its own test program: the data of the last structured exception
// is process-wide and never cleared, so only a process in which no fault has
// been translated yet can show a failure without it.
#include "app/ExceptionTranslator.h"
#include "app/WorkerThread.h"
#include "base/ContainerError.h"
#include "platform/ThreadState.h"
#include "support/FailureBoxProbe.h"
#include "support/WorkerTestSupport.h"

#include <gtest/gtest.h>

using namespace worker_test;

namespace {

class Throwing {
public:
    void Run(WorkerThread*)
    {
        platform::SetLastErrorCode(kTargetLastError);
        throw ContainerError{kResultInvalidArgument};
    }
};

} // namespace

TEST(WorkerFirstFailure, NoStructuredExceptionBeforeMeansNoExceptionDataLine)
{
    platform::FaultRecord fault;
    ASSERT_FALSE(GetLastStructuredException(fault));

    ExpectFailureBoxes();
    Throwing target;
    const FailureBox box = RunToBox(target);
    EXPECT_EQ(box.caption, u"Exception");
    EXPECT_EQ(box.text, FailureText(kCancelled, kTargetLastError, u""));
    EXPECT_EQ(box.text.find(u"ExceptionCode"), std::u16string::npos);
    EXPECT_FALSE(GetLastStructuredException(fault));
}
