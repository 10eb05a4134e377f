#pragma once

#include "base/WideString.h"

#include <cstdint>

class WaveDocument;

// What the checker's commands ask of a path and of the file a document
// walked.

// True when path names a file, not a folder.
bool IsExistingFile(const WideString& path);
// The length of the file that the document has open; 0 when none is.
std::int64_t GetDocumentFileSize(WaveDocument& document);
