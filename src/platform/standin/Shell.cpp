#include "platform/Shell.h"

#include "base/Utf8.h"
#include "platform/DesktopMessageBox.h"
#include "platform/standin/StandIn.h"
#include "platform/standin/TestHooks.h"

#include <mutex>
#include <utility>
#include <vector>

// The stand-in's shell: drops are records that tests make, the open-file
// dialog gives the answer a test set for it, and message boxes are
// recorded and closed with OK at once.
namespace platform {

namespace {

struct Drop {
    std::vector<std::u16string> files;
};

struct ShellState {
    std::mutex mutex;
    int openDrops = 0;
    std::u16string fileDialogAnswer;
    std::vector<testing::DesktopMessageBoxRecord> boxes;
};

ShellState& Shell()
{
    static ShellState state;
    return state;
}

} // namespace

std::uint32_t CountDroppedFiles(std::uintptr_t drop)
{
    return drop == 0 ? 0 : static_cast<std::uint32_t>(reinterpret_cast<Drop*>(drop)->files.size());
}

std::u16string GetDroppedFile(std::uintptr_t drop, std::uint32_t index)
{
    if (drop == 0 || index >= CountDroppedFiles(drop))
        return {};
    return reinterpret_cast<Drop*>(drop)->files[index];
}

void FinishDrop(std::uintptr_t drop)
{
    if (drop == 0)
        return;
    delete reinterpret_cast<Drop*>(drop);
    std::lock_guard lock(Shell().mutex);
    --Shell().openDrops;
}

bool ShowOpenFileDialog(WindowHandle, std::u16string_view, std::u16string_view, std::u16string_view,
                        std::size_t maxPath, std::u16string& path)
{
    standin::RecordCall("ShowOpenFileDialog");
    std::lock_guard lock(Shell().mutex);
    path = Shell().fileDialogAnswer.size() <= maxPath ? Shell().fileDialogAnswer : std::u16string();
    return !path.empty();
}

// Records "OpenWithShell <verb> <file>", the file in UTF-8, and succeeds.
std::intptr_t OpenWithShell(WindowHandle, std::u16string_view verb, std::u16string_view file, int)
{
    standin::RecordCall("OpenWithShell " + WideToUtf8(verb) + " " + WideToUtf8(file));
    return 42;
}

std::int32_t ShowMessageBox(WindowHandle, std::u16string_view text, std::u16string_view caption, std::uint32_t type)
{
    std::lock_guard lock(Shell().mutex);
    Shell().boxes.push_back({std::u16string(text), std::u16string(caption), type});
    return kMessageBoxIdOk;
}

void standin::ResetShell()
{
    std::lock_guard lock(Shell().mutex);
    Shell().fileDialogAnswer.clear();
    Shell().boxes.clear();
}

std::uintptr_t testing::MakeDrop(std::vector<std::u16string> files)
{
    std::lock_guard lock(Shell().mutex);
    ++Shell().openDrops;
    return reinterpret_cast<std::uintptr_t>(new Drop{std::move(files)});
}

int testing::OpenDrops()
{
    std::lock_guard lock(Shell().mutex);
    return Shell().openDrops;
}

void testing::SetOpenFileDialogAnswer(std::u16string path)
{
    std::lock_guard lock(Shell().mutex);
    Shell().fileDialogAnswer = std::move(path);
}

std::vector<testing::DesktopMessageBoxRecord> testing::TakeMessageBoxes()
{
    std::lock_guard lock(Shell().mutex);
    return std::exchange(Shell().boxes, {});
}

} // namespace platform
