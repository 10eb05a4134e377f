#pragma once

#include "base/WideString.h"
#include "cli/TextSink.h"

// The chunk list of a file, as the check's own reader sees it: each chunk
// with its id, offset and declared size, a list's type and an INFO list's
// entries, and a mark where the declared size runs past the end of the
// file or of the chunk around it. Each chunk is written to the sink as it
// is visited. In text, one line for each chunk, indented by depth, lines
// ending in LF; in JSON, one object for the file. True when the file could
// be listed, no size field is cut short and nothing runs past an end.
bool ListChunks(const WideString& path, bool json, TextSink& sink);
