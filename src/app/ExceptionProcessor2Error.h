#pragma once

#include <cstdint>

namespace Exception {

// The program's own exception, thrown by value on the worker thread for a
// failed allocation or a translated fault, and caught only by the worker's
// thread function. ErrorText gives each value's text.
enum ExceptionProcessor2Error : std::int32_t {
    NoError = 0,
    MemoryAllocation = 1,
    MemoryAccess = 2,
    OperationResult = 3,
    Algorithm = 4,
    OperatingSystem = 5,
    Undefined = 6,
};

} // namespace Exception
