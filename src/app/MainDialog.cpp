#include "app/MainDialog.h"

#include "app/MessageLoop.h"
#include "app/MessageLoopRegistry.h"
#include "app/WaveCheck.h"
#include "app/WorkerThread.h"
#include "platform/MessageQueue.h"
#include "platform/Paint.h"

namespace {

// The cancel command: the close box, the window menu's close entry and Esc.
constexpr std::uint16_t kCommandCancel = 2;
constexpr int kExitCodeClosed = 2;

// The timer has no handler. Each tick is a message that the loop counts,
// so it brings an idle pass four times a second.
constexpr std::uintptr_t kIdleTimerId = 0;
constexpr std::uint32_t kIdleTimerPeriodMs = 250;

} // namespace

bool MainDialog::ProcessWindowMessage(platform::WindowHandle, std::uint32_t message, std::uintptr_t wParam,
                                      std::intptr_t lParam, std::intptr_t& result)
{
    result = 0;
    switch (message) {
    case platform::kMessageInitDialog:
        result = OnInitDialog();
        return true;
    case platform::kMessageDestroy:
        OnDestroy();
        return true;
    case platform::kMessageEraseBackground:
        // The whole client area is painted from the backing bitmap; erasing
        // first would only make it flicker.
        result = 1;
        return true;
    case platform::kMessagePaint:
        OnPaint();
        return true;
    case platform::kMessageSize:
        OnSize(lParam);
        return true;
    case platform::kMessageDropFiles:
        OnDropFiles(wParam);
        return true;
    case platform::kMessageCommand:
        if ((wParam & 0xFFFF) == kCommandCancel) {
            OnCancel();
            return true;
        }
        break;
    default:
        break;
    }
    // FIXME: everything else, other commands and the timer among them, goes
    // to the viewer first once there is one; until then the system's default
    // dialog processing has it.
    return false;
}

// Hands the message to the system's dialog manager, which turns Esc into
// the cancel command.
bool MainDialog::PreTranslateMessage(platform::Message& message)
{
    return platform::PreprocessDialogMessage(GetWindow(), message);
}

// FIXME: copies the state of the check into the widgets once there are
// widgets. The result is not looked at.
bool MainDialog::OnIdle()
{
    return false;
}

// A closing program waits here for a check that still runs, and for its
// failure box if one is open.
MainDialog::~MainDialog()
{
    if (worker)
        worker->StopAndDestroy();
}

// The worker is not asked for a stop: a run always goes to its end.
void MainDialog::RunCheck(WorkerThread*)
{
    RunWaveCheck(wavePath, report, reportHasError);
}

std::intptr_t MainDialog::OnInitDialog()
{
    CenterWindow();
    if (MessageLoop* loop = MessageLoopRegistry::FindCurrentThreadLoop()) {
        loop->AddMessageFilter(this);
        loop->AddIdleHandler(this);
    }
    // FIXME: load the layout beside the program into the viewer here.
    platform::StartTimer(GetWindow(), kIdleTimerId, kIdleTimerPeriodMs);
    platform::AcceptDroppedFiles(GetWindow(), true);
    return 1;
}

// Leaves the loop before the loop ends; the worker is the destructor's.
void MainDialog::OnDestroy()
{
    if (MessageLoop* loop = MessageLoopRegistry::FindCurrentThreadLoop()) {
        loop->RemoveMessageFilter(this);
        loop->RemoveIdleHandler(this);
    }
}

void MainDialog::OnPaint()
{
    platform::PaintScope paint(GetWindow());
    // FIXME: blit the viewer's backing bitmap to paint.Context().
}

// FIXME: resizes the viewer to the client size in lParam and repaints it.
void MainDialog::OnSize(std::intptr_t) {}

// FIXME: takes a single dropped .wav file as the path to check.
void MainDialog::OnDropFiles(std::uintptr_t) {}

// The only way out of the program: the window goes, and the loop ends with
// the exit code of a normal close.
void MainDialog::OnCancel()
{
    platform::DestroyDialogWindow(GetWindow());
    platform::PostQuit(kExitCodeClosed);
}
