#include "app/WorkerThread.h"

#include "app/ErrorText.h"
#include "app/ExceptionTranslator.h"
#include "app/TextCatalogue.h"
#include "platform/DesktopMessageBox.h"
#include "platform/FaultTranslation.h"

#include <new>

namespace {

const WideString kLineEnd = u"\r\n";
const WideString kCancelled = u"An error has occurred. The command will be cancelled.\r\n";
const WideString kSaveAndRestart = u"Immediately save the date with another name and restart the application.";
const char16_t kFailureCaption[] = u"Exception";

// The translator of faults for this thread and the handler of failed
// allocations, for the length of a scope. An exception leaving the scope
// destroys the guard while it unwinds, so the old ones are back before a
// catch clause runs. The allocation handler is process-wide: while it is
// set, it is in force on the main thread as well.
class FailureHooksGuard {
public:
    FailureHooksGuard()
        : oldTranslator(platform::SetThreadFaultTranslator(TranslateStructuredException)),
          oldHandler(std::set_new_handler(OnAllocationFailure))
    {
    }
    ~FailureHooksGuard()
    {
        std::set_new_handler(oldHandler);
        platform::SetThreadFaultTranslator(oldTranslator);
    }
    FailureHooksGuard(const FailureHooksGuard&) = delete;
    FailureHooksGuard& operator=(const FailureHooksGuard&) = delete;

private:
    platform::FaultTranslator oldTranslator;
    std::new_handler oldHandler;
};

// Puts the failure text together piece by piece, each English piece through
// the catalogue, and shows it. The box runs on the worker, so the worker
// counts as running until its user has closed it.
void ShowFailure(const WideString& firstPiece)
{
    WideString text = TextCatalogue::Lookup(firstPiece);
    text += TextCatalogue::Lookup(kLineEnd);
    text += TextCatalogue::Lookup(kSaveAndRestart);
    text += TextCatalogue::Lookup(kLineEnd);
    text += SystemErrorText();
    platform::ShowDesktopMessageBox(text.View(), kFailureCaption,
                                    platform::kMessageBoxOk | platform::kMessageBoxIconExclamation);
}

} // namespace

// The lock is held until the thread has been started, or given up: the
// thread's last step needs it, so the thread cannot end and clear the
// handle before the constructor is done. A thread that cannot be made or
// resumed leaves the object not running, without a word.
WorkerThread::WorkerThread(void* target, ErasedMethod method, Caller caller)
    : target(target), method(method), caller(caller)
{
    platform::LockGuard guard(lock);
    thread = platform::CreateSuspendedThread(ThreadMain, this);
    std::uint32_t previousSuspendCount = 0;
    if (IsRunning()) {
        platform::SetThreadPriorityLevel(thread, platform::kThreadPriorityIdle);
        previousSuspendCount = platform::ResumeSuspendedThread(thread);
    }
    if (!thread || previousSuspendCount == platform::kThreadResumeFailed)
        Kill();
}

bool WorkerThread::IsRunning() const
{
    platform::LockGuard guard(lock);
    return thread != nullptr;
}

// The forced end, for a thread that could not be resumed and so never ran.
void WorkerThread::Kill()
{
    platform::LockGuard guard(lock);
    if (IsRunning()) {
        std::uint32_t exitCode = 0;
        platform::GetThreadExitCode(thread, exitCode);
        platform::TerminateThreadWithCode(thread, exitCode);
        platform::CloseThreadHandle(thread);
        thread = nullptr;
    }
}

// Waits, without a time limit, until the thread has ended, a failure box
// that stands open included, and then frees the object. Returns without a
// sleep when the thread has ended already.
void WorkerThread::StopAndDestroy()
{
    stopRequested = 1;
    while (IsRunning())
        platform::SleepMilliseconds(1);
    delete this;
}

std::uint32_t WorkerThread::ThreadMain(void* parameter)
{
    WorkerThread* worker = static_cast<WorkerThread*>(parameter);
    try {
        const FailureHooksGuard hooks;
        worker->caller(worker->target, worker->method, worker);
    } catch (Exception::ExceptionProcessor2Error error) {
        ShowFailure(ErrorText(error));
    } catch (...) {
        ShowFailure(kCancelled);
    }
    worker->ForgetThread();
    return 0;
}

// The thread's last step: from here on IsRunning gives false, and the
// object belongs to whoever calls StopAndDestroy.
void WorkerThread::ForgetThread()
{
    platform::LockGuard guard(lock);
    if (thread) {
        platform::CloseThreadHandle(thread);
        thread = nullptr;
    }
}
