#include "wave/FileLayout.h"

#include "files/FileStream.h"
#include "wave/FileFacts.h"

// A file is RIFF when the walk met a RIFF id, whatever its first id is, as
// the check finds it; only then is a file that begins "RF64" one.
FileLayout::FileLayout(const WideString& path, const LayoutReading& reading, ChunkObserver* observer)
    : path(path), existing(::IsExistingFile(path))
{
    if (existing)
        Read(reading, observer);
}

FileLayout::FileLayout(const MemoryBytes& bytes, const WideString& name, const LayoutReading& reading,
                       ChunkObserver* observer)
    : path(name), memory(bytes), inMemory(true), existing(true)
{
    Read(reading, observer);
}

void FileLayout::Read(const LayoutReading& reading, ChunkObserver* observer)
{
    document.SetTreeForm(reading.form);
    document.SetFrameStreams(false);
    document.SetObserver(observer);
    open = inMemory ? document.OpenMemory(memory, path) : document.OpenFile(path);
    if (!open)
        return;
    bool rf64 = false;
    {
        StreamGuard guard;
        FileStream& stream = document.AcquireStream(guard);
        fileSize = stream.GetSize();
        rf64 = BeginsAsRf64(stream);
    }
    if (rf64 && reading.rf64 == Rf64Reading::InPlaceOfWalk) {
        container = FileContainer::Rf64;
        ReadRf64();
        return;
    }
    walkedWell = document.Walk();
    if (document.GetContainerKind() == kContainerRiff) {
        container = FileContainer::Riff;
    } else if (rf64) {
        container = FileContainer::Rf64;
        if (reading.rf64 == Rf64Reading::AfterWalk)
            ReadRf64();
    }
}

void FileLayout::ReadRf64()
{
    StreamGuard guard;
    rf64Read = ReadRf64Layout(document.AcquireStream(guard), rf64Layout, rf64Problem);
}
