// The worker on the stand-in, where a resume can be made to fail and the
// type of the failure box can be read.
#include "app/WorkerThread.h"
#include "platform/standin/TestHooks.h"
#include "support/WorkerTestSupport.h"

#include <gtest/gtest.h>

using namespace worker_test;

namespace {

class Target {
public:
    void Run(WorkerThread*)
    {
        ++runs;
        if (throws)
            throw 1;
    }
    bool throws = false;
    int runs = 0;
};

} // namespace

TEST(WorkerThreadStandIn, FailedResumeLeavesItNotRunningAtOnce)
{
    Target target;
    platform::testing::FailNextThreadResume();
    WorkerThread* worker = new WorkerThread(&target, &Target::Run);
    EXPECT_FALSE(worker->IsRunning());
    worker->StopAndDestroy();
    EXPECT_EQ(target.runs, 0);
}

TEST(WorkerThreadStandIn, BoxHasOneButtonAndTheExclamationIcon)
{
    platform::testing::HoldDesktopMessageBoxes(false);
    Target target;
    target.throws = true;
    WorkerThread* worker = new WorkerThread(&target, &Target::Run);
    platform::testing::DesktopMessageBoxRecord box;
    ASSERT_TRUE(platform::testing::WaitForDesktopMessageBox(box, 10000));
    ASSERT_TRUE(WaitUntilEnded(*worker));
    worker->StopAndDestroy();
    EXPECT_EQ(box.type, 0x30u);
    EXPECT_EQ(box.caption, u"Exception");
}
