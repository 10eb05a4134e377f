#include "app/ExceptionTranslator.h"

namespace {

// Written only by the translator on the worker, of which there is one at a
// time, and read on the worker's failure path or after the worker has ended.
platform::FaultRecord lastFault;
bool hasLastFault = false;

} // namespace

bool TranslateExceptionCode(std::uint32_t code, Exception::ExceptionProcessor2Error& value)
{
    switch (code) {
    case platform::kFaultDatatypeMisalignment:
    case platform::kFaultAccessViolation:
    case platform::kFaultInvalidHandle:
    case platform::kFaultArrayBoundsExceeded:
        value = Exception::MemoryAccess;
        return true;
    case platform::kFaultFloatDivideByZero:
    case platform::kFaultFloatInexactResult:
    case platform::kFaultFloatOverflow:
    case platform::kFaultFloatStackCheck:
    case platform::kFaultIntegerDivideByZero:
    case platform::kFaultIntegerOverflow:
        value = Exception::OperationResult;
        return true;
    case platform::kFaultFloatInvalidOperation:
        value = Exception::Undefined;
        return true;
    case platform::kFaultNoncontinuableException:
    case platform::kFaultStackOverflow:
    case platform::kFaultPossibleDeadlock:
        value = Exception::Algorithm;
        return true;
    case platform::kFaultGuardPage:
    case platform::kFaultInPageError:
    case platform::kFaultIllegalInstruction:
    case platform::kFaultInvalidDisposition:
        value = Exception::OperatingSystem;
        return true;
    default:
        // Denormal operand and underflow among others: the fault goes on
        // as the platform's untranslated fault, to the catch-all clause.
        return false;
    }
}

// Keeps the fault's data, then throws its value; returns for a code that
// has none.
void TranslateStructuredException(const platform::FaultRecord& fault)
{
    lastFault = fault;
    hasLastFault = true;
    Exception::ExceptionProcessor2Error value = Exception::Undefined;
    if (TranslateExceptionCode(fault.code, value))
        throw value;
}

bool GetLastStructuredException(platform::FaultRecord& fault)
{
    if (!hasLastFault)
        return false;
    fault = lastFault;
    return true;
}

// Never retries: the allocation fails for good.
void OnAllocationFailure()
{
    throw Exception::MemoryAllocation;
}
