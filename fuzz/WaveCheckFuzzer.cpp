// The wave reader and the check on arbitrary bytes, read from a file as the
// product reads them. Each input is checked twice: the two reports must be
// the same, and each must be made only of the check's own lines.
#include "check/WaveCheck.h"
#include "support/ReportGrammar.h"

#include "FuzzInput.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string input = ScratchPath(".wav");
    WriteScratch(input, data, size);

    const WideString path = WideString::FromAscii(input);
    CheckReport first, second;
    bool firstError = false, secondError = false;
    RunWaveCheck(path, first, firstError);
    RunWaveCheck(path, second, secondError);
    if (!(first == second) || firstError != secondError)
        FailInvariant("the check is not deterministic");
    std::string why;
    if (!IsWellFormedReport(first, firstError, why))
        FailInvariant(why.c_str());
    return 0;
}
