// The writer on whatever the reader makes of arbitrary bytes: the tidy
// copy, and the plain write of the first top-level chunk. Neither may
// crash, and neither output may grow beyond what the input can account
// for: the bytes of the chunks plus, for each chunk of 8 bytes or more, a
// format grown to 18 bytes and a pad byte.
#include "check/TidyCopy.h"
#include "wave/Chunk.h"
#include "wave/WaveDocument.h"

#include "FuzzInput.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string input = ScratchPath("-source.wav");
    static const std::string copy = ScratchPath("-tidy.wav");
    static const std::string written = ScratchPath("-written.wav");
    WriteScratch(input, data, size);
    const long bound = 12 + 4 * static_cast<long>(size);

    std::remove(copy.c_str());
    std::vector<std::string> changes;
    std::string problem;
    const bool copied = MakeTidyCopy(WideString::FromAscii(input), WideString::FromAscii(copy), changes, problem);
    if (copied != (ScratchSize(copy) >= 0))
        FailInvariant("the copy exists exactly when it was made");
    if (ScratchSize(copy) > bound)
        FailInvariant("the tidy copy is larger than the input accounts for");
    if (copied) {
        WaveDocument reread;
        reread.Open(WideString::FromAscii(copy));
        if (reread.GetContainerKind() != kContainerRiff)
            FailInvariant("the tidy copy doesn't read as RIFF");
    }

    WaveDocument document;
    document.Open(WideString::FromAscii(input));
    if (document.GetChunks().IsEmpty())
        return 0;
    std::remove(written.c_str());
    FileStream file;
    if (!file.CreateNew(WideString::FromAscii(written), false))
        FailInvariant("can't make the output file");
    document.GetChunks().At(0)->Write(file);
    file.Close();
    if (ScratchSize(written) > bound)
        FailInvariant("the written chunk is larger than the input accounts for");
    return 0;
}
