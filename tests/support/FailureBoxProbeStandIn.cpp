#include "support/FailureBoxProbe.h"

#include "platform/standin/TestHooks.h"

void ExpectFailureBoxes()
{
    platform::testing::HoldDesktopMessageBoxes(true);
}

bool WaitForFailureBox(FailureBox& box)
{
    platform::testing::DesktopMessageBoxRecord record;
    if (!platform::testing::WaitForDesktopMessageBox(record, 10000))
        return false;
    box = {record.text, record.caption};
    return true;
}

void CloseFailureBox()
{
    platform::testing::CloseDesktopMessageBoxes();
}
