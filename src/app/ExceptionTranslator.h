#pragma once

#include "app/ExceptionProcessor2Error.h"
#include "platform/FaultTranslation.h"

#include <cstdint>

// What the worker puts in place while its function runs: the translator of
// structured exceptions, which also keeps the data of the last one for the
// failure text, and the handler of failed allocations. The kept data is
// process-wide and never cleared.

// The value that a structured exception with this code is thrown as; false
// for a code that is thrown as nothing of the program's own.
bool TranslateExceptionCode(std::uint32_t code, Exception::ExceptionProcessor2Error& value);

// The translator for platform::SetThreadFaultTranslator.
void TranslateStructuredException(const platform::FaultRecord& fault);

// The data of the last structured exception that reached the translator;
// false until there was one.
bool GetLastStructuredException(platform::FaultRecord& fault);

// The handler for std::set_new_handler.
[[noreturn]] void OnAllocationFailure();
