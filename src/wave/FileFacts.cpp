#include "wave/FileFacts.h"

#include "platform/FileSystem.h"

bool IsExistingFile(const WideString& path)
{
    const std::uint32_t attributes = platform::GetPathAttributes(path.View());
    return attributes != platform::kInvalidFileAttributes && !(attributes & platform::kFileAttributeDirectory);
}
