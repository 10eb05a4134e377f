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

// A failed resume leaves the worker not running at once; a failure's box
// has one button and the exclamation icon.
TEST(WorkerThreadStandIn, FailedResumeAndTheKindOfBox)
{
    Target target;
    platform::testing::FailNextThreadResume();
    WorkerThread* worker = new WorkerThread(&target, &Target::Run);
    EXPECT_FALSE(worker->IsRunning());
    worker->StopAndDestroy();
    EXPECT_EQ(target.runs, 0);

    platform::testing::HoldDesktopMessageBoxes(false);
    target.throws = true;
    worker = new WorkerThread(&target, &Target::Run);
    platform::testing::DesktopMessageBoxRecord box;
    ASSERT_TRUE(platform::testing::WaitForDesktopMessageBox(box, 10000));
    ASSERT_TRUE(WaitUntilEnded(*worker));
    worker->StopAndDestroy();
    EXPECT_EQ(box.type, 0x30u);
    EXPECT_EQ(box.caption, u"Exception");
}
