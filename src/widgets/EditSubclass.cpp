#include "widgets/EditSubclass.h"

#include "engine/Viewer.h"
#include "loop/MessageLoop.h"
#include "loop/MessageLoopRegistry.h"
#include "widgets/TextBox.h"

// A thread without a message loop gets no filter; the object then only
// hooks the window.
EditSubclass::EditSubclass(TextBox* box) : SavedProcedure(platform::DefaultWindowProcedure()), Box(box)
{
    if (MessageLoop* loop = MessageLoopRegistry::FindCurrentThreadLoop())
        loop->AddMessageFilter(this);
}

EditSubclass::~EditSubclass()
{
    UnsubclassWindow();
    if (MessageLoop* loop = MessageLoopRegistry::FindCurrentThreadLoop())
        loop->RemoveMessageFilter(this);
}

// Message dispatch

// The end of the control brings its text to safety and is not passed on.
// Focus loss goes to the widgets first, and on to the control only when
// none of them took it. The procedure is taken before the widgets run,
// since ending an edit takes the hook off.
std::intptr_t EditSubclass::ProcessWindowMessage(platform::WindowHandle window, std::uint32_t message,
                                                 std::uintptr_t wParam, std::intptr_t lParam)
{
    const platform::WindowProcedureHandle procedure = SavedProcedure;
    if (message == platform::kMessageDestroy) {
        Box->DestroyNativeWindow(false);
        OnFinalMessage(window);
        return 0;
    }
    if (message == platform::kMessageKillFocus) {
        Viewer* viewer = Box->GetOwner();
        if (viewer != nullptr && viewer->OnMessage(window, message, wParam, lParam))
            return 0;
    }
    return platform::CallWindowProcedure(procedure, window, message, wParam, lParam);
}

platform::HookProcedure EditSubclass::GetWindowProc()
{
    return WindowProc;
}

// Nothing to do: the TextBox owns this object, not the window.
void EditSubclass::OnFinalMessage(platform::WindowHandle) {}

// Message filter

// Keys of any window of the thread are offered to the widgets; the one a
// widget takes goes no further, so that Enter, Tab and Ctrl+A never reach
// the control when a widget claims them. Nothing of this object is touched
// after the widgets ran: a Tab may end this object's control and start a
// new one, which replaces this object.
bool EditSubclass::PreTranslateMessage(platform::Message& message)
{
    if (message.id != platform::kMessageKeyDown && message.id != platform::kMessageKeyUp)
        return false;
    Viewer* viewer = Box->GetOwner();
    return viewer != nullptr && viewer->OnMessage(message.window, message.id, message.wParam, message.lParam);
}

// Operations

// False when the window isn't alive.
bool EditSubclass::SubclassWindow(platform::WindowHandle window)
{
    Link = {GetWindowProc(), this};
    const platform::WindowProcedureHandle previous = platform::HookWindowProcedure(window, &Link);
    if (previous == nullptr)
        return false;
    Window = window;
    SavedProcedure = previous;
    return true;
}

// Puts the control's own procedure back, unless something else replaced
// the hook since, and forgets the control.
void EditSubclass::UnsubclassWindow()
{
    if (Window != nullptr && platform::IsLiveWindow(Window))
        platform::UnhookWindowProcedure(Window, SavedProcedure);
    Window = nullptr;
    SavedProcedure = platform::DefaultWindowProcedure();
}

std::intptr_t EditSubclass::WindowProc(void* object, platform::WindowHandle window, std::uint32_t message,
                                       std::uintptr_t wParam, std::intptr_t lParam)
{
    return static_cast<EditSubclass*>(object)->ProcessWindowMessage(window, message, wParam, lParam);
}
