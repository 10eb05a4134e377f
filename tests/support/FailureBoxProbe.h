#pragma once

#include <string>

// What a test sees of the worker's failure box: on Windows the real box,
// found among the process's windows and closed with its OK button; on the
// posix stand-in its record.
struct FailureBox {
    std::u16string text;
    std::u16string caption;
};

// Makes the boxes of the posix stand-in wait for the test as the real ones
// wait for a user, and forgets earlier ones. Call before the worker starts.
void ExpectFailureBoxes();
// Waits up to ten seconds for a failure box to be up and reads it; the box
// stays open. false when none came.
bool WaitForFailureBox(FailureBox& box);
// Closes the box that was read last, as its user would.
void CloseFailureBox();
