#pragma once

#include "base/Array.h"
#include "platform/RecursiveLock.h"
#include "platform/ThreadState.h"

class DialogWindow;

// The dialogs whose windows are being made, each with the thread making it:
// the way an object reaches the first message of its new window. One per
// process, under a lock of its own; it owns no dialog.
class PendingWindowList {
public:
    PendingWindowList() = default;
    PendingWindowList(const PendingWindowList&) = delete;
    PendingWindowList& operator=(const PendingWindowList&) = delete;

    bool Add(platform::ThreadId thread, DialogWindow* dialog);
    DialogWindow* Take(platform::ThreadId thread);
    bool Discard(platform::ThreadId thread, DialogWindow* dialog);

    static PendingWindowList& Process();

private:
    platform::RecursiveLock lock;
    Array<platform::ThreadId> threadIds;
    Array<DialogWindow*> dialogs;
};
