#include "app/Program.h"

#include "app/MainDialog.h"
#include "loop/MessageLoop.h"
#include "loop/MessageLoopRegistry.h"
#include "platform/SystemStartup.h"
#include "platform/ThreadState.h"
#include "platform/Window.h"

#include <cassert>

namespace {

// The module whose resources hold the dialog template; set by the entry.
platform::InstanceHandle programInstance = nullptr;

constexpr int kExitCodeNoWindow = 0;

} // namespace

// The command line is not read: the program takes no path and no options.
int ProgramMain(platform::InstanceHandle instance, platform::InstanceHandle, std::u16string_view, int showCommand)
{
    programInstance = instance;
    platform::InitializeCom();
    platform::InitializeCommonControls(platform::kCommonControlBarClasses);
    int exitCode = kExitCodeNoWindow;
    {
        MessageLoopRegistry registry;
        MessageLoopRegistry::SetProcess(&registry);
        exitCode = RunProgram(showCommand);
        MessageLoopRegistry::SetProcess(nullptr);
    }
    platform::UninitializeCom();
    return exitCode;
}

// Objects go in the reverse order of their making, and GDI+ stops last,
// after the dialog has let go of everything it drew with.
int RunProgram(int showCommand)
{
    // Nothing looks at the status: without GDI+ every drawing call fails
    // by itself and the window stays empty.
    platform::GdiplusToken gdiplusToken = 0;
    platform::StartGdiplus(gdiplusToken);
    int exitCode = kExitCodeNoWindow;
    {
        MessageLoop loop;
        MessageLoopRegistry* registry = MessageLoopRegistry::Process();
        assert(registry != nullptr);
        registry->Add(platform::CurrentThreadId(), &loop);
        {
            MainDialog dialog;
            // When the window can't be made the thread's entry stays in the
            // registry until the registry goes, right after this function.
            if (dialog.Create(programInstance, MainDialog::kTemplateId) != nullptr) {
                // The template is not visible: this is when the window appears.
                platform::ShowWindowAs(dialog.GetWindow(), showCommand);
                exitCode = loop.Run();
                registry->Remove();
            }
        }
    }
    platform::StopGdiplus(gdiplusToken);
    return exitCode;
}
