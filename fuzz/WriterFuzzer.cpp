// The writer on whatever the reader makes of arbitrary bytes: the tidy
// copy, and the plain write of the first top-level chunk. Neither may
// crash, and neither output may grow beyond what the input can account
// for: the bytes of the chunks plus, for each chunk of 8 bytes or more, a
// format grown to 18 bytes and a pad byte. A tidy copy reads as RIFF, or,
// of an RF64 file, as RF64 whose ds64 RIFF size is the copy's. The tree
// read in compact form must write the very bytes of the whole tree.
#include "mend/TidyCopy.h"
#include "wave/Chunk.h"
#include "wave/Rf64File.h"
#include "wave/WaveDocument.h"

#include "FuzzInput.h"

#include <cstdint>
#include <cstring>
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
    FileLayout layout(WideString::FromAscii(input), kTidyReading);
    const bool copied = MakeTidyCopy(layout, WideString::FromAscii(copy), changes, problem);
    if (copied != (ScratchSize(copy) >= 0))
        FailInvariant("the copy exists exactly when it was made");
    if (ScratchSize(copy) > bound)
        FailInvariant("the tidy copy is larger than the input accounts for");
    // An RF64 file's copy is RF64 by design; a RIFF file's becomes one only
    // past 4 GiB, far beyond any input here.
    if (copied && size >= 4 && std::memcmp(data, "RF64", 4) == 0) {
        Rf64Layout layout;
        std::string why;
        if (!ReadRf64Layout(WideString::FromAscii(copy), layout, why) || !layout.hasDs64 ||
            layout.riffSize != layout.fileSize - 8)
            FailInvariant("the tidy copy of an RF64 file doesn't read as RF64 with its own size in ds64");
    } else if (copied) {
        WaveDocument reread;
        reread.Open(WideString::FromAscii(copy));
        if (reread.GetContainerKind() != kContainerRiff)
            FailInvariant("the tidy copy doesn't read as RIFF");
    }

    static const std::string compactWritten = ScratchPath("-compact.wav");
    bool results[2] = {};
    const std::string* outputs[2] = {&written, &compactWritten};
    for (int form = 0; form < 2; ++form) {
        WaveDocument document;
        document.SetTreeForm(form == 0 ? TreeForm::Whole : TreeForm::Compact);
        document.Open(WideString::FromAscii(input));
        if (document.GetChunks().IsEmpty())
            return 0;
        std::remove(outputs[form]->c_str());
        FileStream file;
        if (!file.CreateNew(WideString::FromAscii(*outputs[form]), false))
            FailInvariant("can't make the output file");
        results[form] = document.GetChunks().At(0)->Write(file);
        file.Close();
    }
    if (ScratchSize(written) > bound)
        FailInvariant("the written chunk is larger than the input accounts for");
    if (results[0] != results[1] || ScratchBytes(written) != ScratchBytes(compactWritten))
        FailInvariant("the compact tree writes other bytes than the whole tree");
    return 0;
}
