#pragma once

#include "app/CheckReport.h"
#include "base/WideString.h"

class WorkerThread;

// The program's one top-level window and the owner of the state of one
// check: the path, the report and the result flag. Lives on the main
// thread's stack; RunCheck runs on the worker.
class MainDialog {
public:
    // Background check
    void RunCheck(WorkerThread* runningWorker);

    // Check state
    void SetWavePath(const WideString& path) { wavePath = path; }
    const CheckReport& GetReport() const { return report; }
    bool ReportHasError() const { return reportHasError; }

private:
    WorkerThread* worker = nullptr;
    WideString wavePath;
    CheckReport report;
    bool reportHasError = false;
};
