// The wave reader and the check on arbitrary bytes, read from a file as the
// product reads them. Each input is checked twice: the two reports must be
// the same, and each must be made only of the check's own lines.
#include "check/WaveCheck.h"
#include "support/ReportGrammar.h"

#include "FuzzInput.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

const std::string& InputPath()
{
    static const std::string path = [] {
        const char* folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        return std::string(folder) + "/sondara-fuzz-" + std::to_string(getpid()) + ".wav";
    }();
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::FILE* file = std::fopen(InputPath().c_str(), "wb");
    if (!file)
        FailInvariant("can't write the input file");
    if (size > 0 && std::fwrite(data, 1, size, file) != size)
        FailInvariant("can't write the input file");
    std::fclose(file);

    const WideString path = WideString::FromAscii(InputPath());
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
