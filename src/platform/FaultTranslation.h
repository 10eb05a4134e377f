#pragma once

#include <cstdint>

// Hardware and system faults of a thread (structured exceptions on Windows,
// fault signals elsewhere) turned into C++ exceptions that leave from the
// faulting instruction. Code that may fault this way has to be compiled with
// -fnon-call-exceptions, or the compiler may take it for code that cannot
// throw.
namespace platform {

// Exception codes of the system, with Windows' values on every platform.
constexpr std::uint32_t kFaultGuardPage = 0x80000001;
constexpr std::uint32_t kFaultDatatypeMisalignment = 0x80000002;
constexpr std::uint32_t kFaultAccessViolation = 0xC0000005;
constexpr std::uint32_t kFaultInPageError = 0xC0000006;
constexpr std::uint32_t kFaultInvalidHandle = 0xC0000008;
constexpr std::uint32_t kFaultIllegalInstruction = 0xC000001D;
constexpr std::uint32_t kFaultNoncontinuableException = 0xC0000025;
constexpr std::uint32_t kFaultInvalidDisposition = 0xC0000026;
constexpr std::uint32_t kFaultArrayBoundsExceeded = 0xC000008C;
constexpr std::uint32_t kFaultFloatDenormalOperand = 0xC000008D;
constexpr std::uint32_t kFaultFloatDivideByZero = 0xC000008E;
constexpr std::uint32_t kFaultFloatInexactResult = 0xC000008F;
constexpr std::uint32_t kFaultFloatInvalidOperation = 0xC0000090;
constexpr std::uint32_t kFaultFloatOverflow = 0xC0000091;
constexpr std::uint32_t kFaultFloatStackCheck = 0xC0000092;
constexpr std::uint32_t kFaultFloatUnderflow = 0xC0000093;
constexpr std::uint32_t kFaultIntegerDivideByZero = 0xC0000094;
constexpr std::uint32_t kFaultIntegerOverflow = 0xC0000095;
constexpr std::uint32_t kFaultPrivilegedInstruction = 0xC0000096;
constexpr std::uint32_t kFaultStackOverflow = 0xC00000FD;
constexpr std::uint32_t kFaultPossibleDeadlock = 0xC0000194;

// What the system tells about one fault.
struct FaultRecord {
    std::uint32_t code = 0;
    std::uint32_t flags = 0;
    // The faulting instruction.
    std::uintptr_t address = 0;
    std::uint32_t parameterCount = 0;
};

// Called on the faulting thread as if the faulting instruction had called
// it: what it throws unwinds the frames that were active at the fault.
using FaultTranslator = void (*)(const FaultRecord& fault);

// Thrown from the faulting instruction when the thread's translator returned.
struct UntranslatedFault {
    FaultRecord fault;
};

// Sets the translator of the calling thread and gives back the one before;
// null means none, and a fault then goes the system's way.
FaultTranslator SetThreadFaultTranslator(FaultTranslator translator);

} // namespace platform
