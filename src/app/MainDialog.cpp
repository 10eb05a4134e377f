#include "app/MainDialog.h"

#include "app/VersionInfo.h"
#include "app/WebLinks.h"
#include "app/WorkerThread.h"
#include "check/WaveCheck.h"
#include "engine/PopupMenu.h"
#include "engine/WidgetEvent.h"
#include "files/PathParts.h"
#include "loop/MessageLoop.h"
#include "loop/MessageLoopRegistry.h"
#include "platform/DesktopMessageBox.h"
#include "platform/Input.h"
#include "platform/MessageQueue.h"
#include "platform/Paint.h"
#include "platform/Shell.h"
#include "widgets/WidgetFactory.h"

#include <utility>

namespace {

// The cancel command: the close box, the window menu's close entry and Esc.
constexpr std::uint16_t kCommandCancel = 2;
constexpr int kExitCodeClosed = 2;

// The timer has no handler. Each tick is a message that the loop counts,
// so it brings an idle pass four times a second.
constexpr std::uintptr_t kIdleTimerId = 0;
constexpr std::uint32_t kIdleTimerPeriodMs = 250;

constexpr char16_t kLayoutName[] = u"Main.jpn";

// The names of the widgets that the dialog knows, and their keys.
constexpr char16_t kWaveFilePath[] = u"WaveFilePath";
constexpr char16_t kMessage[] = u"Message";
constexpr char16_t kCheckStart[] = u"CheckStart";
constexpr char16_t kSearchError[] = u"SearchError";
constexpr char16_t kSelectWaveFile[] = u"SelectWaveFile";
constexpr char16_t kReleaseNote[] = u"ReleaseNote";
constexpr char16_t kText[] = u"Text";
constexpr char16_t kEnable[] = u"Enable";
constexpr char16_t kEditing[] = u"Editing";

constexpr char16_t kRunning[] = u"処理中...";
constexpr char16_t kNotWave[] = u"Wavファイルではありません。";
constexpr char16_t kCaption[] = u"Sondara";

constexpr char16_t kOpenTitle[] = u"ファイルの選択";
constexpr char16_t kOpenFilter[] = u"Wavファイル (*.wav)|*.wav||";
constexpr char16_t kOpenExtension[] = u"wav";
constexpr std::size_t kOpenMaxPath = 260;

// The open-file dialog with a filter written with bars between its parts.
bool AskForOpenFile(platform::WindowHandle owner, std::u16string_view barFilter, std::u16string_view extension,
                    std::u16string_view title, std::u16string& path)
{
    std::u16string filter(barFilter);
    for (char16_t& unit : filter) {
        if (unit == u'|')
            unit = u'\0';
    }
    return platform::ShowOpenFileDialog(owner, filter, extension, title, kOpenMaxPath, path);
}

} // namespace

// The layout lies beside the program.
MainDialog::MainDialog() : MainDialog(WidgetFactory, PathParts(WideString()).GetDriveDir() + kLayoutName) {}

MainDialog::MainDialog(WidgetFactoryFunction factory, const WideString& layoutPath)
    : viewer(this, factory), layoutPath(layoutPath)
{
}

bool MainDialog::ProcessWindowMessage(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
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
    // Everything else, other commands and the timer among them, goes to the
    // widgets; what they don't take, the system's dialog processing gets.
    return viewer.OnMessage(window, message, wParam, lParam);
}

// Hands the message to the system's dialog manager, which turns Esc into
// the cancel command.
bool MainDialog::PreTranslateMessage(platform::Message& message)
{
    return platform::PreprocessDialogMessage(GetWindow(), message);
}

// Copies the state of the check into the widgets. While a check runs the
// message says so and neither a new check nor a search can be started;
// once it has ended the report shows, unless the user is inside the
// message's text, and the buttons follow the path and the result. The
// setters paint only what really changed, so every pass writes everything.
bool MainDialog::OnIdle()
{
    if (worker != nullptr && worker->IsRunning()) {
        viewer.SetWidgetAttribute(kMessage, kText, kRunning);
        viewer.SetWidgetBool(kCheckStart, kEnable, false);
        viewer.SetWidgetBool(kSearchError, kEnable, false);
        return false;
    }
    if (resultForgotten) {
        report.Clear();
        reportHasError = false;
        resultForgotten = false;
    }
    bool editing = true;
    if (viewer.GetWidgetBool(kMessage, kEditing, editing) && !editing)
        viewer.SetWidgetAttribute(kMessage, kText, report);
    WideString path;
    viewer.GetWidgetAttribute(kWaveFilePath, kText, path);
    viewer.SetWidgetBool(kCheckStart, kEnable, !path.IsEmpty());
    viewer.SetWidgetBool(kSearchError, kEnable, reportHasError);
    return false;
}

// Acts on the activation of the four named buttons only.
bool MainDialog::OnWidgetCommand(Viewer&, const WidgetEvent& event)
{
    if (event.Code != EventCode::kCommand)
        return false;
    if (event.Name == kSelectWaveFile) {
        SelectWaveFile();
        return true;
    }
    if (event.Name == kCheckStart) {
        StartCheck();
        return true;
    }
    if (event.Name == kReleaseNote) {
        OpenReleaseNote();
        return true;
    }
    if (event.Name == kSearchError) {
        SearchError();
        return true;
    }
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
    // Without a layout the window shows an empty view and can still be
    // closed.
    viewer.Load(layoutPath, false);
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

// Copies the backing bitmap; all drawing happened when something changed.
void MainDialog::OnPaint()
{
    platform::PaintScope paint(GetWindow());
    viewer.Blit(paint.Context());
}

void MainDialog::OnSize(std::intptr_t lParam)
{
    const auto width = static_cast<std::int16_t>(lParam & 0xFFFF);
    const auto height = static_cast<std::int16_t>((lParam >> 16) & 0xFFFF);
    bool resized = false;
    {
        platform::WindowContextScope context(GetWindow());
        resized = viewer.Resize(context.Context(), width, height);
    }
    if (resized) {
        viewer.PaintAll();
        viewer.Flush(false, true);
    }
}

// Takes one dropped file whose name ends in ".wav", in any case, as the
// path to check; the content is the check's business. A drop of several
// files is ignored without a word.
void MainDialog::OnDropFiles(std::uintptr_t drop)
{
    if (drop == 0)
        return;
    const std::uint32_t count = platform::CountDroppedFiles(drop);
    const WideString path(count == 1 ? platform::GetDroppedFile(drop, 0) : std::u16string());
    platform::FinishDrop(drop);
    if (count != 1)
        return;
    if (!(PathParts(path).GetExt().ToLowerAscii() == u".wav")) {
        platform::ShowMessageBox(GetWindow(), kNotWave, kCaption, platform::kMessageBoxOk);
        return;
    }
    viewer.SetWidgetAttribute(kWaveFilePath, kText, path);
    ForgetResult();
}

// Commands

// After a cancel nothing changes.
void MainDialog::SelectWaveFile()
{
    std::u16string path;
    if (!AskForOpenFile(GetWindow(), kOpenFilter, kOpenExtension, kOpenTitle, path))
        return;
    viewer.SetWidgetAttribute(kWaveFilePath, kText, WideString(path));
    ForgetResult();
}

// Offers the report's lines in a popup at the cursor and looks the chosen
// one up on the maker's site. Reached only while no check runs, so the
// report is the dialog's to read.
void MainDialog::SearchError()
{
    const Array<WideString> lines = ReportLines(report);
    PopupMenu menu;
    menu.Reset();
    for (const WideString& line : lines)
        menu.AddItem(line);
    std::int32_t x = 0;
    std::int32_t y = 0;
    platform::GetCursorScreenPosition(x, y);
    const std::int32_t chosen = menu.Track(GetWindow(), x, y);
    if (chosen >= 0 && static_cast<std::size_t>(chosen) < lines.Count())
        OpenAddress(SearchAddress(lines.At(static_cast<std::size_t>(chosen))));
}

// The release note of the running version, by its product version in the
// language-neutral string table: "1, 0, 0, 1" ends the address in
// "sondara_100".
void MainDialog::OpenReleaseNote()
{
    VersionInfo version;
    version.Load(WideString());
    version.translation = u"000004b0";
    OpenAddress(ReleaseNoteAddress(version.GetVersionText()));
}

// Waits for a check that still runs, then starts one on the path as it
// stands. The next idle pass shows the new state.
void MainDialog::StartCheck()
{
    if (worker != nullptr) {
        worker->StopAndDestroy();
        worker = nullptr;
    }
    resultForgotten = false;
    viewer.GetWidgetAttribute(kWaveFilePath, kText, wavePath);
    worker = new WorkerThread(this, &MainDialog::RunCheck);
}

// While a check runs, report and reportHasError are the worker's: the
// dialog notes that the result is to go, and the first idle pass after the
// check has ended clears it, so the old result never shows for the new
// path and the search stays disabled until the next check ends.
void MainDialog::ForgetResult()
{
    if (worker != nullptr && worker->IsRunning()) {
        resultForgotten = true;
        return;
    }
    report.Clear();
    reportHasError = false;
}

// The only way out of the program: the window goes, and the loop ends with
// the exit code of a normal close.
void MainDialog::OnCancel()
{
    platform::DestroyDialogWindow(GetWindow());
    platform::PostQuit(kExitCodeClosed);
}
