#include "wave/ChunkWriteGuard.h"

#include "files/FileStream.h"
#include "wave/FourCc.h"

#include <limits>

bool WriteU32(FileStream& target, std::uint32_t value)
{
    std::uint8_t bytes[4];
    WriteLittleEndian32(bytes, value);
    return target.Write(bytes, 4) == 4;
}

ChunkWriteGuard::ChunkWriteGuard(FileStream& target, std::uint32_t id) : target(target)
{
    WriteU32(target, id);
    WriteU32(target, 0);
    bodyStart = target.Tell();
}

// A body longer than a size field holds leaves the field at 0. The pad
// byte follows the absolute position, as the reader's pad step does.
void ChunkWriteGuard::Finish()
{
    if (finished)
        return;
    finished = true;
    const std::int64_t end = target.Tell();
    const std::int64_t length = end - bodyStart;
    if (length >= 0 && length <= std::numeric_limits<std::uint32_t>::max()) {
        target.SeekTo(bodyStart - 4);
        WriteU32(target, static_cast<std::uint32_t>(length));
        target.SeekTo(end);
    }
    if (end % 2 != 0) {
        const std::uint8_t pad = 0;
        target.Write(&pad, 1);
    }
}
