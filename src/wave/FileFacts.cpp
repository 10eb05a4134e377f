#include "wave/FileFacts.h"

#include "platform/FileSystem.h"
#include "wave/WaveDocument.h"

bool IsExistingFile(const WideString& path)
{
    const std::uint32_t attributes = platform::GetPathAttributes(path.View());
    return attributes != platform::kInvalidFileAttributes && !(attributes & platform::kFileAttributeDirectory);
}

std::int64_t GetDocumentFileSize(WaveDocument& document)
{
    StreamGuard guard;
    return document.AcquireStream(guard).GetSize();
}
