#include "app/DialogWindow.h"

#include "app/PendingWindowList.h"
#include "platform/MessageQueue.h"
#include "platform/ThreadState.h"

namespace {

// The system's code for "not enough memory": what a window that could not
// even be prepared leaves behind as the thread's last error.
constexpr std::uint32_t kErrorNotEnoughMemory = 14;

constexpr std::uint32_t kCenterFlags =
    platform::kPositionNoSize | platform::kPositionNoZOrder | platform::kPositionNoActivate;

} // namespace

platform::DialogProcedure DialogWindow::GetDialogProc()
{
    return DialogProc;
}

// Does nothing: the object belongs to whoever made it, not to its window.
void DialogWindow::OnFinalMessage(platform::WindowHandle) {}

// Makes the window of template templateId and binds it to this object; its
// initialisation message has been handled when this returns. Null when the
// binding could not be prepared (the thread's last error is then 14) or the
// window could not be made.
platform::WindowHandle DialogWindow::Create(platform::InstanceHandle instance, int templateId)
{
    platform::ThreadId thread = platform::CurrentThreadId();
    if (!PendingWindowList::Process().Add(thread, this)) {
        platform::SetLastErrorCode(kErrorNotEnoughMemory);
        return nullptr;
    }
    platform::WindowHandle made = platform::CreateDialogWindow(instance, templateId, StartDialogProc);
    // A window that failed before its first message leaves the entry behind.
    PendingWindowList::Process().Discard(thread, this);
    return made;
}

// The procedure of a new window up to its first message: it takes the
// object that the making thread left in the pending list, stores the handle
// in it and hands the window over to the object's own procedure.
bool DialogWindow::StartDialogProc(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                                   std::intptr_t lParam, std::intptr_t& result)
{
    DialogWindow* dialog = PendingWindowList::Process().Take(platform::CurrentThreadId());
    if (dialog == nullptr)
        return false;
    dialog->window = window;
    platform::SetWindowContext(window, dialog);
    platform::DialogProcedure procedure = dialog->GetDialogProc();
    platform::SetDialogProcedure(window, procedure);
    return procedure(window, message, wParam, lParam, result);
}

// Hands the message to the bound object. After the window's last message
// the object forgets the handle and hears about it once more.
bool DialogWindow::DialogProc(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                              std::intptr_t lParam, std::intptr_t& result)
{
    auto* dialog = static_cast<DialogWindow*>(platform::GetWindowContext(window));
    if (dialog == nullptr)
        return false;
    bool handled = dialog->ProcessWindowMessage(window, message, wParam, lParam, result);
    if (message == platform::kMessageNcDestroy) {
        platform::SetWindowContext(window, nullptr);
        dialog->window = nullptr;
        dialog->OnFinalMessage(window);
    }
    return handled;
}

bool DialogWindow::CenterWindow()
{
    if (window == nullptr)
        return false;
    // A window without owner is centred on the monitor's work area, which
    // is also the area it has to stay inside.
    platform::PixelRect area = platform::GetNearestWorkArea(window);
    WindowOrigin origin = CenterWithin(platform::GetWindowBounds(window), area);
    return platform::SetWindowPosition(window, origin.x, origin.y, -1, -1, kCenterFlags);
}

WindowOrigin CenterWithin(const platform::PixelRect& windowRect, const platform::PixelRect& area)
{
    std::int32_t width = windowRect.Width();
    std::int32_t height = windowRect.Height();
    std::int32_t x = (area.left + area.right) / 2 - width / 2;
    std::int32_t y = (area.top + area.bottom) / 2 - height / 2;
    if (x + width > area.right)
        x = area.right - width;
    if (x < area.left)
        x = area.left;
    if (y + height > area.bottom)
        y = area.bottom - height;
    if (y < area.top)
        y = area.top;
    return {x, y};
}
