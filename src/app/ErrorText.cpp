#include "app/ErrorText.h"

#include "app/ExceptionTranslator.h"
#include "platform/SystemError.h"
#include "platform/ThreadState.h"

#include <cstddef>
#include <cstdint>

namespace {

// As printf's %p writes a value on Windows: upper-case hexadecimal digits,
// as many as a pointer has. The program's own 32-bit build gets eight for
// every field. A 64-bit build gets sixteen for the address, which would
// not fit in eight, and eight for the three fields that are 32 bits wide on
// every platform.
void AppendHex(WideString& text, std::uint64_t value, std::size_t digits)
{
    static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    for (std::size_t shift = digits * 4; shift > 0; shift -= 4)
        text += kDigits[(value >> (shift - 4)) & 0xF];
}

constexpr std::size_t kFieldDigits = 8;
constexpr std::size_t kAddressDigits = sizeof(std::uintptr_t) * 2;

} // namespace

// Any value outside the enumeration reads as Undefined.
WideString ErrorText(Exception::ExceptionProcessor2Error value)
{
    switch (value) {
    case Exception::NoError:
        return u"It ended normally.";
    case Exception::MemoryAllocation:
        return u"The memory allocating error occurred.";
    case Exception::MemoryAccess:
        return u"The memory unlawful computer access error occurred.";
    case Exception::OperationResult:
        return u"The operation result error occurred.";
    case Exception::Algorithm:
        return u"The algorithm error occurred.";
    case Exception::OperatingSystem:
        return u"OS error occurred.";
    default:
        return u"An undefined error occurred.";
    }
}

// The system's text for the calling thread's last error, followed, once a
// structured exception has reached the translator in this process, by a
// line with that exception's data.
WideString SystemErrorText()
{
    WideString text(platform::SystemErrorMessage(platform::GetLastErrorCode()));
    platform::FaultRecord fault;
    if (GetLastStructuredException(fault)) {
        text += u"\nExceptionCode: ";
        AppendHex(text, fault.code, kFieldDigits);
        text += u", ExceptionFlags: ";
        AppendHex(text, fault.flags, kFieldDigits);
        text += u", ExceptionAddress: ";
        AppendHex(text, fault.address, kAddressDigits);
        text += u", NumberParameters: ";
        AppendHex(text, fault.parameterCount, kFieldDigits);
        text += u"\n";
    }
    return text;
}
