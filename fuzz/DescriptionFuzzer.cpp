// The chunk description reader and the writer on arbitrary section text:
// the tree that the text describes is written out. The output must stay
// within what the sections can make (12 bytes of root, at most 26 for each
// further section), and must read back as a RIFF file.
#include "layouttext/LayoutDocument.h"
#include "wave/Chunk.h"
#include "wave/WaveDocument.h"

#include "FuzzInput.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string output = ScratchPath("-described.wav");
    LayoutDocument sections;
    sections.Parse(WideString(UnitsFromBytes(data, size)));
    const std::int32_t count = sections.GetSectionCount();

    WaveDocument document;
    std::unique_ptr<Chunk> root;
    if (!document.CreateChunk(ChunkIdFromName(WideString(u"Riff")), root))
        FailInvariant("no root chunk");
    const bool loaded = root->LoadDescription(sections);
    if (loaded != (count > 0) || sections.GetSectionCount() != 0)
        FailInvariant("a description is not used up exactly when it has sections");
    if (root->GetChildren().Count() + (count > 0 ? 1 : 0) > static_cast<std::size_t>(count))
        FailInvariant("more chunks than sections");

    std::remove(output.c_str());
    FileStream file;
    if (!file.CreateNew(WideString::FromAscii(output), false))
        FailInvariant("can't make the output file");
    root->Write(file);
    file.Close();
    if (ScratchSize(output) > 12 + 26 * static_cast<long>(count))
        FailInvariant("the output is larger than the sections can make");

    WaveDocument written;
    written.Open(WideString::FromAscii(output));
    if (written.GetContainerKind() != kContainerRiff)
        FailInvariant("the output doesn't read as RIFF");
    return 0;
}
