// The worker on the posix stand-in, where tests can make a resume fail and
// see the box's type and the faults that only this platform raises on
// demand.
#include "app/ExceptionTranslator.h"
#include "app/WorkerThread.h"
#include "platform/FaultTranslation.h"
#include "platform/standin/TestHooks.h"
#include "platform/ThreadState.h"
#include "support/FailureBoxProbe.h"
#include "support/WorkerTestSupport.h"

#include <gtest/gtest.h>

#include <cfenv>

using namespace worker_test;

namespace {

class Recorder {
public:
    void Run(WorkerThread*) { ++runs; }
    int runs = 0;
};

volatile double tiny = 1e-300;
volatile double product = 0;

class Underflowing {
public:
    void Run(WorkerThread*)
    {
        platform::SetLastErrorCode(kTargetLastError);
        // The thread's own floating-point environment, gone with the thread.
        feenableexcept(FE_UNDERFLOW);
        product = tiny * tiny;
    }
};

class Throwing {
public:
    void Run(WorkerThread*) { throw 1; }
};

} // namespace

TEST(WorkerThreadStandIn, FailedResumeLeavesItNotRunningAtOnce)
{
    Recorder target;
    platform::testing::FailNextThreadResume();
    WorkerThread* worker = new WorkerThread(&target, &Recorder::Run);
    EXPECT_FALSE(worker->IsRunning());
    worker->StopAndDestroy();
    EXPECT_EQ(target.runs, 0);
}

TEST(WorkerThreadStandIn, BoxHasOneButtonAndTheExclamationIcon)
{
    platform::testing::HoldDesktopMessageBoxes(false);
    Throwing target;
    WorkerThread* worker = new WorkerThread(&target, &Throwing::Run);
    platform::testing::DesktopMessageBoxRecord box;
    ASSERT_TRUE(platform::testing::WaitForDesktopMessageBox(box, 10000));
    ASSERT_TRUE(WaitUntilEnded(*worker));
    worker->StopAndDestroy();
    EXPECT_EQ(box.type, 0x30u);
    EXPECT_EQ(box.caption, u"Exception");
}

TEST(WorkerThreadStandIn, FaultOutsideTheTableGoesToTheCatchAll)
{
    ExpectFailureBoxes();
    Underflowing target;
    WorkerThread* worker = new WorkerThread(&target, &Underflowing::Run);
    FailureBox box;
    ASSERT_TRUE(WaitForFailureBox(box));
    CloseFailureBox();
    ASSERT_TRUE(WaitUntilEnded(*worker));
    worker->StopAndDestroy();

    platform::FaultRecord fault;
    ASSERT_TRUE(GetLastStructuredException(fault));
    EXPECT_EQ(fault.code, platform::kFaultFloatUnderflow);
    EXPECT_EQ(box.text, FailureText(kCancelled, kTargetLastError, ExceptionDataLine(fault)));
}
