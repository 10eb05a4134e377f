#pragma once

#include "app/WorkerThread.h"
#include "platform/FaultTranslation.h"
#include "platform/SystemError.h"
#include "support/FailureBoxProbe.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <thread>

// What the tests of the worker share: waiting for its end and for its
// failure box, and the failure texts they expect, written out here
// independently of the program.
namespace worker_test {

constexpr std::u16string_view kSaveLine =
    u"Immediately save the date with another name and restart the application.";
constexpr std::u16string_view kCancelled = u"An error has occurred. The command will be cancelled.\r\n";
// The last error code that faulting targets leave on their thread.
constexpr std::uint32_t kTargetLastError = 2;

// false when the thread still runs after ten seconds.
inline bool WaitUntilEnded(const WorkerThread& worker)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (worker.IsRunning()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Starts a worker on the target's Run, reads its failure box while it is
// up, closes it as a user would, and gives it once the worker has ended.
template <typename Target>
FailureBox RunToBox(Target& target)
{
    FailureBox box;
    WorkerThread* worker = new WorkerThread(&target, &Target::Run);
    EXPECT_TRUE(WaitForFailureBox(box));
    // The box runs on the worker, which counts as running until it is closed.
    EXPECT_TRUE(worker->IsRunning());
    CloseFailureBox();
    EXPECT_TRUE(WaitUntilEnded(*worker));
    worker->StopAndDestroy();
    return box;
}

// The address as wide as a pointer, the other fields eight digits wide.
inline std::u16string ExceptionDataLine(const platform::FaultRecord& fault)
{
    char line[160];
    std::snprintf(line, sizeof line,
                  "\nExceptionCode: %08" PRIX32 ", ExceptionFlags: %08" PRIX32 ", ExceptionAddress: %0*" PRIXPTR
                  ", NumberParameters: %08" PRIX32 "\n",
                  fault.code, fault.flags, static_cast<int>(sizeof(std::uintptr_t) * 2), fault.address,
                  fault.parameterCount);
    return std::u16string(line, line + std::char_traits<char>::length(line));
}

// The whole text of a box: the first piece, the save line, the system's
// text for the worker's last error and the exception data line, if any.
inline std::u16string FailureText(std::u16string_view firstPiece, std::uint32_t lastError,
                                  std::u16string_view exceptionDataLine)
{
    std::u16string text(firstPiece);
    text += u"\r\n";
    text += kSaveLine;
    text += u"\r\n";
    text += platform::SystemErrorMessage(lastError);
    text += exceptionDataLine;
    return text;
}

} // namespace worker_test
