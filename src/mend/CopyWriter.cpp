#include "mend/CopyWriter.h"

#include "wave/FourCc.h"
#include "wave/Md5Chunk.h"
#include "wave/Rf64File.h"

#include <algorithm>

namespace {

void WriteLittleEndian64(std::uint8_t* bytes, std::int64_t value)
{
    WriteLittleEndian32(bytes, static_cast<std::uint32_t>(value));
    WriteLittleEndian32(bytes + 4, static_cast<std::uint32_t>(static_cast<std::uint64_t>(value) >> 32));
}

} // namespace

CopyWriter::CopyWriter(FileStream& input, FileStream& target, Output output)
    : input(input), target(target), output(output), buffer(1024 * 1024)
{
}

// The twelve bytes of the input's RIFF header, as they stand: the RIFF size
// is written by FinishRiff.
bool CopyWriter::StartRiff(const std::uint8_t* riffHeader)
{
    return Put(riffHeader, 12);
}

// RF64 with the size that defers to ds64, the form type, and a ds64 chunk:
// the input's own at 12 when it has one (its table kept), else a new one.
// Its sizes are written by FinishRf64.
bool CopyWriter::StartRf64(const std::uint8_t* formType, std::optional<std::uint32_t> inputDs64Size)
{
    const std::uint8_t head[8] = {'R', 'F', '6', '4', 0xFF, 0xFF, 0xFF, 0xFF};
    if (!Put(head, 8) || !Put(formType, 4))
        return false;
    ds64At = written + 8;
    if (!inputDs64Size) {
        const std::uint8_t chunk[36] = {'d', 's', '6', '4', 28};
        return Put(chunk, 36);
    }
    std::uint8_t header[8];
    const std::uint32_t size = *inputDs64Size;
    return input.SeekTo(12) && input.Read(header, 8) == 8 && Put(header, 8) && CopyBytes(20, size) &&
           (size % 2 == 0 || Put("", 1));
}

// A chunk of the input, its body at body, with the size given and its pad
// byte. In an RF64 copy the data chunk's size field defers to ds64; the
// caller sees to it that no other chunk has 4 GiB or more. False when the
// input can't be read or the copy written.
bool CopyWriter::WriteChunk(std::uint32_t id, std::int64_t body, std::int64_t size)
{
    if (id == kIdData)
        dataBytes = size;
    std::uint8_t header[8];
    WriteLittleEndian32(header, id);
    WriteLittleEndian32(header + 4, IsRf64() && id == kIdData ? kRf64DefersSize : static_cast<std::uint32_t>(size));
    hashing = dataMd5 && id == kIdData && !dataHashed;
    const bool copied = Put(header, 8) && CopyBytes(body, size);
    dataHashed = dataHashed || hashing;
    hashing = false;
    return copied && (size % 2 == 0 || Put("", 1));
}

// False when no data chunk was copied, or the system failed the hash.
bool CopyWriter::WriteMd5Chunk(platform::Md5Digest& digest)
{
    if (!dataHashed || (output == Output::Written && !dataMd5->Finish(digest)))
        return false;
    std::uint8_t header[8];
    WriteLittleEndian32(header, kIdMd5);
    WriteLittleEndian32(header + 4, static_cast<std::uint32_t>(kMd5ChunkBytes));
    return Put(header, 8) && Put(digest.data(), kMd5ChunkBytes);
}

// count bytes of the input from from, as they stand.
bool CopyWriter::CopyBytes(std::int64_t from, std::int64_t count)
{
    if (output == Output::Dry) {
        written += count;
        return true;
    }
    if (!input.SeekTo(from))
        return false;
    while (count > 0) {
        const auto piece = static_cast<std::uint32_t>(std::min<std::int64_t>(count, buffer.size()));
        if (input.Read(buffer.data(), piece) != piece || !Put(buffer.data(), piece))
            return false;
        if (hashing)
            dataMd5->Add(buffer.data(), piece);
        count -= piece;
    }
    return true;
}

bool CopyWriter::FinishRiff(std::uint32_t riffSize)
{
    std::uint8_t sizeField[4];
    WriteLittleEndian32(sizeField, riffSize);
    return PatchAt(4, sizeField, 4);
}

// ds64's 64-bit sizes: the RIFF chunk's, the audio's and its frames.
bool CopyWriter::FinishRf64(std::int64_t riffSize, std::uint32_t blockAlign)
{
    std::uint8_t sizes[24];
    WriteLittleEndian64(sizes, riffSize);
    WriteLittleEndian64(sizes + 8, dataBytes);
    WriteLittleEndian64(sizes + 16, blockAlign ? dataBytes / blockAlign : 0);
    return PatchAt(ds64At, sizes, 24);
}

bool CopyWriter::Put(const void* bytes, std::uint32_t count)
{
    written += count;
    return output == Output::Dry || target.Write(bytes, count) == count;
}

// Writes over what was written at position, and comes back to the end.
bool CopyWriter::PatchAt(std::int64_t position, const std::uint8_t* bytes, std::uint32_t count)
{
    return target.SeekTo(position) && target.Write(bytes, count) == count && target.SeekTo(written);
}
