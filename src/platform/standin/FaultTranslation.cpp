#include "platform/FaultTranslation.h"

#include <csignal>
#include <iterator>

#include <signal.h>
#include <ucontext.h>

// Faults arrive as signals on the faulting thread. The handler throws the
// translated exception itself: with -fnon-call-exceptions GCC's unwinder
// crosses the signal frame and reaches the faulting instruction's frame.
// The handler is installed once for the process and passes the faults of
// threads without a translator on to whatever handled them before.
//
// FIXME: a stack overflow ends the process, since the handler would need an
// alternate stack to run at all.
namespace platform {

namespace {

constexpr int kFaultSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};

thread_local FaultTranslator threadTranslator = nullptr;
struct sigaction previousActions[std::size(kFaultSignals)];

// The Windows exception that comes nearest to each kind of fault.
std::uint32_t FaultCode(int signal, int code)
{
    switch (signal) {
    case SIGSEGV:
#if defined(SEGV_BNDERR)
        if (code == SEGV_BNDERR)
            return kFaultArrayBoundsExceeded;
#endif
        return kFaultAccessViolation;
    case SIGBUS:
        // Any other bus error is a mapped page that could not be read in.
        return code == BUS_ADRALN ? kFaultDatatypeMisalignment : kFaultInPageError;
    case SIGFPE:
        switch (code) {
        case FPE_INTDIV: return kFaultIntegerDivideByZero;
        case FPE_INTOVF: return kFaultIntegerOverflow;
        case FPE_FLTDIV: return kFaultFloatDivideByZero;
        case FPE_FLTOVF: return kFaultFloatOverflow;
        case FPE_FLTUND: return kFaultFloatUnderflow;
        case FPE_FLTRES: return kFaultFloatInexactResult;
        case FPE_FLTSUB: return kFaultArrayBoundsExceeded;
        default: return kFaultFloatInvalidOperation;
        }
    default:
        return code == ILL_PRVOPC || code == ILL_PRVREG ? kFaultPrivilegedInstruction : kFaultIllegalInstruction;
    }
}

// Windows gives an access violation two parameters (read or write, and the
// address) and an in-page error three; the other faults none.
std::uint32_t ParameterCount(std::uint32_t code)
{
    if (code == kFaultAccessViolation)
        return 2;
    return code == kFaultInPageError ? 3 : 0;
}

// The faulting instruction. Where the machine context is not known here,
// si_addr stands in: the instruction for arithmetic and illegal-instruction
// faults, the data address for memory faults.
std::uintptr_t FaultAddress([[maybe_unused]] const siginfo_t* info, const void* context)
{
    const ucontext_t* machine = static_cast<const ucontext_t*>(context);
#if defined(__x86_64__)
    return static_cast<std::uintptr_t>(machine->uc_mcontext.gregs[REG_RIP]);
#elif defined(__i386__)
    return static_cast<std::uintptr_t>(machine->uc_mcontext.gregs[REG_EIP]);
#elif defined(__aarch64__)
    return static_cast<std::uintptr_t>(machine->uc_mcontext.pc);
#else
    (void)machine;
    return reinterpret_cast<std::uintptr_t>(info->si_addr);
#endif
}

// A signal that is not ours to translate goes to the action that was there
// before. The default action is taken by raising the signal again with it;
// so is ignoring, for a fault, which cannot be ignored.
void PassOn(int signal, siginfo_t* info, void* context)
{
    const struct sigaction* previous = nullptr;
    for (std::size_t i = 0; i < std::size(kFaultSignals); ++i) {
        if (kFaultSignals[i] == signal)
            previous = &previousActions[i];
    }
    if (previous && (previous->sa_flags & SA_SIGINFO)) {
        previous->sa_sigaction(signal, info, context);
        return;
    }
    if (previous && previous->sa_handler != SIG_DFL && previous->sa_handler != SIG_IGN) {
        previous->sa_handler(signal);
        return;
    }
    if (previous && previous->sa_handler == SIG_IGN && info->si_code <= 0)
        return;
    std::signal(signal, SIG_DFL);
    raise(signal);
}

void OnFaultSignal(int signal, siginfo_t* info, void* context)
{
    const FaultTranslator translator = threadTranslator;
    // A code of 0 or less is a signal that was sent, not a fault.
    if (!translator || info->si_code <= 0) {
        PassOn(signal, info, context);
        return;
    }
    FaultRecord fault;
    fault.code = FaultCode(signal, info->si_code);
    fault.address = FaultAddress(info, context);
    fault.parameterCount = ParameterCount(fault.code);
    translator(fault);
    throw UntranslatedFault{fault};
}

void InstallHandlerOnce()
{
    static const bool installed = [] {
        struct sigaction action = {};
        action.sa_sigaction = OnFaultSignal;
        // The handler is left by a throw and never returns to unblock its
        // signal, so the signal must not be blocked while it runs.
        action.sa_flags = SA_SIGINFO | SA_NODEFER;
        sigemptyset(&action.sa_mask);
        for (std::size_t i = 0; i < std::size(kFaultSignals); ++i)
            sigaction(kFaultSignals[i], &action, &previousActions[i]);
        return true;
    }();
    (void)installed;
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
