#pragma once

#include "app/CheckReport.h"
#include "app/DialogWindow.h"
#include "app/IdleHandler.h"
#include "app/MessageFilter.h"
#include "base/WideString.h"

#include <cstdint>

class WorkerThread;

// The program's one top-level window and the owner of the state of one
// check: the path, the report and the result flag. Lives on the main
// thread's stack; RunCheck runs on the worker.
class MainDialog : public DialogWindow, public MessageFilter, public IdleHandler {
public:
    // The resource number of the dialog's template.
    static constexpr int kTemplateId = 129;

    // Message dispatch
    bool ProcessWindowMessage(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                              std::intptr_t lParam, std::intptr_t& result) override;
    ~MainDialog() override;

    // Message filter and idle handler
    bool PreTranslateMessage(platform::Message& message) override;
    bool OnIdle() override;

    // Background check
    void RunCheck(WorkerThread* runningWorker);

    // Check state
    void SetWavePath(const WideString& path) { wavePath = path; }
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

    WorkerThread* worker = nullptr;
    WideString wavePath;
    CheckReport report;
    bool reportHasError = false;
};
