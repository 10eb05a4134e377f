#include "app/PendingWindowList.h"

// A thread makes one window at a time up to its first message: false, and
// no change, when thread already has a dialog waiting.
bool PendingWindowList::Add(platform::ThreadId thread, DialogWindow* dialog)
{
    platform::LockGuard guard(lock);
    for (platform::ThreadId known : threadIds)
        if (known == thread)
            return false;
    threadIds.Add(thread);
    dialogs.Add(dialog);
    return true;
}

// Takes out the dialog that thread is making; null when there is none.
DialogWindow* PendingWindowList::Take(platform::ThreadId thread)
{
    platform::LockGuard guard(lock);
    for (std::size_t i = 0; i < threadIds.Count(); ++i) {
        if (threadIds.At(i) == thread) {
            threadIds.RemoveAt(i);
            return dialogs.RemoveAt(i);
        }
    }
    return nullptr;
}

// Takes out the entry of thread only when it is still dialog's, for a
// window that failed before its first message. false when it was not there.
bool PendingWindowList::Discard(platform::ThreadId thread, DialogWindow* dialog)
{
    platform::LockGuard guard(lock);
    for (std::size_t i = 0; i < threadIds.Count(); ++i) {
        if (threadIds.At(i) == thread && dialogs.At(i) == dialog) {
            threadIds.RemoveAt(i);
            dialogs.RemoveAt(i);
            return true;
        }
    }
    return false;
}

PendingWindowList& PendingWindowList::Process()
{
    static PendingWindowList list;
    return list;
}
