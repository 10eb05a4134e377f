#include "wave/InfoChunk.h"

#include "platform/TextCodec.h"
#include "wave/WaveDocument.h"

InfoChunk::InfoChunk(WaveDocument& document) : Chunk(document)
{
    document.RegisterInfoChunk(this, true);
}

InfoChunk::~InfoChunk()
{
    document->RegisterInfoChunk(this, false);
}

// Reads entries up to the end that the list's size gives; it reads no size
// of its own and doesn't look at the container kind. Outside a list the size
// is unset, the end lies before the stream, and nothing is read. An entry
// whose length is 0 or not below the list's size gives up the rest of the
// list. A text keeps all that its length covers, a zero byte included, and a
// repeated id keeps the later text. True when at least one entry was stored.
bool InfoChunk::Read(std::uint32_t chunkId)
{
    id = chunkId;
    StreamGuard guard;
    FileStream& stream = document->AcquireStream(guard);
    if (!stream.IsOpen())
        return false;
    position = stream.Tell() - 4;
    const std::int64_t end = position + size + 4;
    while (stream.Tell() < end) {
        char entryId[4];
        std::uint32_t length = 0;
        if (stream.Read(entryId, 4) < 4 || !ReadU32(stream, length))
            return false;
        if (length == 0 || length >= size) {
            stream.SeekTo(end);
        } else {
            WideString text;
            // The stream reads only what the file holds, whatever the length claims.
            if (!stream.ReadText(text, length))
                return false;
            entries.Set(WideString(platform::ThreadBytesToWide(entryId, 4)), text);
        }
        if (stream.Tell() % 2 != 0 && !stream.Seek(1, platform::SeekOrigin::Current))
            return false;
    }
    return entries.Count() > 0;
}
