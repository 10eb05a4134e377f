#include "platform/FaultTranslation.h"

#include <windows.h>

// GCC has no working _set_se_translator. A vectored exception handler takes
// the faults of the threads that have a translator instead: it keeps the
// record for the thread and changes the faulting context so that the thread
// goes on in RaiseTranslatedFault, as if the faulting instruction had called
// it. The throw there then unwinds the faulting frames like any other.
namespace platform {

namespace {

thread_local FaultTranslator threadTranslator = nullptr;
thread_local FaultRecord pendingFault;

// Faults the translator sees: the system's exceptions of error severity and
// the two warnings that report memory faults. The rest is left alone: above
// all the codes of the C++ runtime's own throws and unwinding, which carry
// the customer bit, breakpoints, and the informational exceptions of
// debugger output and thread names.
bool IsTranslatable(DWORD code)
{
    return (code & 0xF0000000) == 0xC0000000 || code == kFaultGuardPage || code == kFaultDatatypeMisalignment;
}

} // namespace

// Runs on the faulting thread in place of the faulting instruction.
extern "C" [[noreturn]] void SondaraRaiseTranslatedFault()
{
    const FaultRecord fault = pendingFault;
    if (threadTranslator)
        threadTranslator(fault);
    throw UntranslatedFault{fault};
}

namespace {

// The entry of the redirected thread. The return address that the handler
// pushed is the faulting instruction's address plus one, so that unwinding,
// which looks up the frame at the return address less one, finds the
// faulting instruction itself and not the one before it. The stack there
// need not be 16-byte aligned (a leaf function keeps it at 8 modulo 16), so
// the entry aligns it before the call, and states in its unwind data how to
// find the return address again.
#if defined(__x86_64__)
extern "C" void SondaraTranslatedFaultEntry();
asm(R"(
    .text
    .p2align 4
    .def SondaraTranslatedFaultEntry; .scl 3; .type 32; .endef
    .seh_proc SondaraTranslatedFaultEntry
SondaraTranslatedFaultEntry:
    pushq %rbp
    .seh_pushreg %rbp
    movq %rsp, %rbp
    .seh_setframe %rbp, 0
    .seh_endprologue
    andq $-16, %rsp
    subq $32, %rsp
    call SondaraRaiseTranslatedFault
    ud2
    .seh_endproc
)");

void RedirectToEntry(CONTEXT& context)
{
    context.Rsp -= sizeof(DWORD64);
    *reinterpret_cast<DWORD64*>(context.Rsp) = context.Rip + 1;
    context.Rip = reinterpret_cast<DWORD64>(&SondaraTranslatedFaultEntry);
}
#elif defined(__i386__)
// Here DWARF call frame information describes the realigned frame, so the
// compiler's realignment is enough.
[[noreturn, gnu::force_align_arg_pointer]] void TranslatedFaultEntry()
{
    SondaraRaiseTranslatedFault();
}

void RedirectToEntry(CONTEXT& context)
{
    context.Esp -= sizeof(DWORD);
    *reinterpret_cast<DWORD*>(context.Esp) = context.Eip + 1;
    context.Eip = reinterpret_cast<DWORD>(&TranslatedFaultEntry);
}
#else
#error "No fault redirection for this processor"
#endif

LONG CALLBACK OnVectoredException(EXCEPTION_POINTERS* pointers)
{
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (!IsTranslatable(record.ExceptionCode) || !threadTranslator)
        return EXCEPTION_CONTINUE_SEARCH;
    pendingFault.code = record.ExceptionCode;
    pendingFault.flags = record.ExceptionFlags;
    pendingFault.address = reinterpret_cast<std::uintptr_t>(record.ExceptionAddress);
    pendingFault.parameterCount = record.NumberParameters;
    RedirectToEntry(*pointers->ContextRecord);
    return EXCEPTION_CONTINUE_EXECUTION;
}

void InstallHandlerOnce()
{
    // The handler stays for the life of the process and does nothing on
    // threads without a translator. First in the chain, it sees a fault
    // before any frame-based handler: a fault that system code would catch
    // for itself is taken over as well while a translator is set.
    static const PVOID handler = AddVectoredExceptionHandler(1, OnVectoredException);
    (void)handler;
}

} // namespace

FaultTranslator SetThreadFaultTranslator(FaultTranslator translator)
{
    if (translator)
        InstallHandlerOnce();
    const FaultTranslator previous = threadTranslator;
    threadTranslator = translator;
    return previous;
}

} // namespace platform
