#include "app/ExceptionTranslator.h"
#include "app/WorkerThread.h"
#include "base/ContainerError.h"
#include "base/Utf8.h"
#include "platform/ThreadState.h"
#include "support/FailureBoxProbe.h"
#include "support/WorkerTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <new>
#include <thread>

using namespace worker_test;

namespace {

// The worker keeps the method with its class erased; a virtual one must
// still dispatch as the target's class does.
class Shape {
public:
    virtual ~Shape() = default;
    virtual void Run(WorkerThread*) { ++shapeRuns; }
    int shapeRuns = 0;
};

class Circle : public Shape {
public:
    void Run(WorkerThread* worker) override
    {
        seen = worker;
        started = true;
        while (waitForStop && !worker->IsStopRequested())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        sawStop = worker->IsStopRequested();
    }
    bool waitForStop = false;
    std::atomic<bool> started{false};
    WorkerThread* seen = nullptr;
    bool sawStop = false;
};

// The faults, kept where the compiler can neither see the outcome nor drop
// the operation, and out of the sanitizers' sight, which would report them
// before they happen.
volatile int zeroDivisor = 0;
volatile int sink = 0;

[[gnu::noinline, gnu::no_sanitize("undefined")]] void DivideByZero()
{
    volatile int dividend = 7;
    sink = dividend / zeroDivisor;
}

[[gnu::noinline, gnu::no_sanitize("undefined")]] void WriteThroughNull()
{
    volatile int* volatile pointer = nullptr;
    *pointer = 1;
}

// Leaves a known last error on its thread and then fails as told.
class Failing {
public:
    enum class How {
        DivideByZero, WriteThroughNull, ThrowContainerError, ThrowAlgorithm, AllocateTooMuch, ReturnNormally
    };

    explicit Failing(How how) : how(how) {}

    void Run(WorkerThread*)
    {
        handlerInside = std::get_new_handler();
        platform::SetLastErrorCode(kTargetLastError);
        switch (how) {
        case How::DivideByZero:
            DivideByZero();
            break;
        case How::WriteThroughNull:
            WriteThroughNull();
            break;
        case How::ThrowContainerError:
            throw ContainerError{kResultOutOfMemory};
        case How::ThrowAlgorithm:
            throw Exception::Algorithm;
        case How::AllocateTooMuch: {
#if defined(__SANITIZE_ADDRESS__)
            // AddressSanitizer's operator new ends the process on failure
            // instead of calling the handler; call it as operator new would.
            std::get_new_handler()();
#else
            // More than any address space holds; a size the compiler cannot see.
            volatile std::size_t size = ~std::size_t{0} / 4 * 3;
            void* volatile memory = ::operator new(size);
            ::operator delete(memory);
#endif
            break;
        }
        case How::ReturnNormally:
            return;
        }
        reachedEnd = true;
    }

    How how;
    std::new_handler handlerInside = nullptr;
    bool reachedEnd = false;
};

class WorkerFailure : public ::testing::Test {
protected:
    void SetUp() override { ExpectFailureBoxes(); }
};

} // namespace

TEST(WorkerThreadLife, RunsItsTargetAndStopAndDestroyWaitsForIt)
{
    Circle circle;
    Shape& shape = circle;
    WorkerThread* worker = new WorkerThread(&shape, &Shape::Run);
    ASSERT_TRUE(WaitUntilEnded(*worker));
    EXPECT_EQ(circle.shapeRuns, 0);
    EXPECT_EQ(circle.seen, worker);
    EXPECT_FALSE(circle.sawStop);
    worker->StopAndDestroy();

    Circle waiting;
    waiting.waitForStop = true;
    worker = new WorkerThread(&waiting, &Circle::Run);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!waiting.started && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_TRUE(waiting.started);
    EXPECT_TRUE(worker->IsRunning());
    worker->StopAndDestroy();
    EXPECT_TRUE(waiting.sawStop);
}

TEST_F(WorkerFailure, FaultsShowTheirTextTheSystemTextAndTheExceptionData)
{
    struct Case {
        const char* name;
        Failing::How how;
        void (*function)();
        std::uint32_t code;
        std::uint32_t parameterCount;
        std::u16string_view firstLine;
    };
    const Case cases[] = {
        {"division by zero", Failing::How::DivideByZero, DivideByZero, 0xC0000094, 0,
         u"The operation result error occurred."},
        {"access violation", Failing::How::WriteThroughNull, WriteThroughNull, 0xC0000005, 2,
         u"The memory unlawful computer access error occurred."},
    };
    // An empty system text would make the comparisons below prove little.
    EXPECT_FALSE(platform::SystemErrorMessage(kTargetLastError).empty());
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        Failing target(test.how);
        const FailureBox box = RunToBox(target);
        EXPECT_FALSE(target.reachedEnd);

        platform::FaultRecord fault;
        ASSERT_TRUE(GetLastStructuredException(fault));
        EXPECT_EQ(fault.code, test.code);
        EXPECT_EQ(fault.flags, 0u);
        EXPECT_EQ(fault.parameterCount, test.parameterCount);
        // The faulting instruction lies in the function that faulted.
        const auto start = reinterpret_cast<std::uintptr_t>(test.function);
        EXPECT_GE(fault.address, start);
        EXPECT_LT(fault.address, start + 1024);

        EXPECT_EQ(box.caption, u"Exception");
        EXPECT_EQ(box.text, FailureText(test.firstLine, kTargetLastError, ExceptionDataLine(fault)));
    }
}

TEST_F(WorkerFailure, OldExceptionDataStaysForLaterFailures)
{
    Failing divider(Failing::How::DivideByZero);
    RunToBox(divider);
    platform::FaultRecord fault;
    ASSERT_TRUE(GetLastStructuredException(fault));
    const std::u16string oldLine = ExceptionDataLine(fault);

    // An exception of another type: the catch-all clause, with an empty
    // line after its own first piece.
    Failing other(Failing::How::ThrowContainerError);
    FailureBox box = RunToBox(other);
    EXPECT_EQ(box.text, FailureText(kCancelled, kTargetLastError, oldLine));
    EXPECT_EQ(box.text.rfind(u"An error has occurred. The command will be cancelled.\r\n\r\n", 0), 0u);

    // A value of the program's own, thrown by the function itself.
    Failing algorithm(Failing::How::ThrowAlgorithm);
    box = RunToBox(algorithm);
    EXPECT_EQ(box.text, FailureText(u"The algorithm error occurred.", kTargetLastError, oldLine));
}

// The worker's own allocation handler turns a failed allocation into a
// box; the handler from before is back once the function has returned, and
// before the box shows.
TEST_F(WorkerFailure, FailedAllocationShowsMemoryAllocation)
{
    static std::atomic<int> sentinelCalls{0};
    const std::new_handler sentinel = [] { ++sentinelCalls; };
    const std::new_handler before = std::set_new_handler(sentinel);
    Failing returning(Failing::How::ReturnNormally);
    WorkerThread* worker = new WorkerThread(&returning, &Failing::Run);
    ASSERT_TRUE(WaitUntilEnded(*worker));
    worker->StopAndDestroy();
    EXPECT_NE(returning.handlerInside, sentinel);
    EXPECT_EQ(std::get_new_handler(), sentinel);

    Failing target(Failing::How::AllocateTooMuch);
    worker = new WorkerThread(&target, &Failing::Run);
    FailureBox box;
    ASSERT_TRUE(WaitForFailureBox(box));
    EXPECT_EQ(std::get_new_handler(), sentinel);
    CloseFailureBox();
    ASSERT_TRUE(WaitUntilEnded(*worker));
    worker->StopAndDestroy();
    EXPECT_FALSE(target.reachedEnd);
    EXPECT_NE(target.handlerInside, sentinel);
    EXPECT_EQ(std::get_new_handler(), sentinel);
    std::set_new_handler(before);
    EXPECT_EQ(sentinelCalls, 0);

    // Whatever exception data an earlier test of this process left stays.
    // The failed allocation may leave a last error of its own, as Windows'
    // heap does.
    platform::FaultRecord fault;
    const std::u16string dataLine = GetLastStructuredException(fault) ? ExceptionDataLine(fault) : u"";
    constexpr std::uint32_t kNotEnoughMemory = 8;
    const std::u16string_view first = u"The memory allocating error occurred.";
    EXPECT_TRUE(box.text == FailureText(first, kTargetLastError, dataLine) ||
                box.text == FailureText(first, kNotEnoughMemory, dataLine))
        << WideToUtf8(box.text);
}
