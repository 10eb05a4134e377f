#pragma once

#include "app/DialogWindow.h"
#include "base/WideString.h"
#include "check/CheckReport.h"
#include "engine/Viewer.h"
#include "engine/WidgetHost.h"
#include "loop/IdleHandler.h"
#include "loop/MessageFilter.h"
#include "platform/ProgramResources.h"

#include <cstdint>

class WorkerThread;

// The program's one top-level window and the owner of the state of one
// check: the path, the report and the result flag. It feeds the window's
// messages to its Viewer, reacts to the commands of the named widgets and
// to dropped files, and in each idle moment copies the state of the check
// into the widgets. Lives on the main thread's stack; RunCheck runs on the
// worker.
class MainDialog : public DialogWindow, public MessageFilter, public IdleHandler, public WidgetHost {
public:
    // The resource number of the dialog's template.
    static constexpr int kTemplateId = SONDARA_MAIN_DIALOG_ID;

    MainDialog();
    // A dialog whose widgets come from factory and whose layout is read
    // from layoutPath instead of the one beside the program.
    MainDialog(WidgetFactoryFunction factory, const WideString& layoutPath);

    // Message dispatch
    bool ProcessWindowMessage(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                              std::intptr_t lParam, std::intptr_t& result) override;
    ~MainDialog() override;

    // Message filter and idle handler
    bool PreTranslateMessage(platform::Message& message) override;
    bool OnIdle() override;

    // Widget host
    platform::WindowHandle GetWidgetWindow() override { return GetWindow(); }
    bool OnWidgetCommand(Viewer& viewer, const WidgetEvent& event) override;

    // Background check
    void RunCheck(WorkerThread* runningWorker);

    // Check state
    const CheckReport& GetReport() const { return report; }
    bool ReportHasError() const { return reportHasError; }

private:
    // Message handlers
    std::intptr_t OnInitDialog();
    void OnDestroy();
    void OnPaint();
    void OnSize(std::intptr_t lParam);
    void OnDropFiles(std::uintptr_t drop);
    void OnCancel();

    // Commands
    void SelectWaveFile();
    void StartCheck();
    void SearchError();
    void OpenReleaseNote();
    // A new path was chosen: the result of the last check no longer holds.
    void ForgetResult();

    Viewer viewer;
    WideString layoutPath;
    WorkerThread* worker = nullptr;
    WideString wavePath;
    CheckReport report;
    bool reportHasError = false;
    // Set when the path changed while a check ran: report and
    // reportHasError belong to the worker then, and its result is dropped
    // at the first idle pass after it ended.
    bool resultForgotten = false;
};
