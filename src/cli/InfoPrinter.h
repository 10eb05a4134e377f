#pragma once

#include "base/WideString.h"
#include "cli/TextSink.h"

// The metadata a file carries, in file order, each chunk with its offset:
// INFO entries decoded by one fixed rule with the encoding beside each,
// bext field by field, cue points with their labels, smpl, acid, cart and
// iXML. Text, or one JSON object for the file. True when the file is a
// RIFF WAVE file that could be read.
bool PrintInfo(const WideString& path, bool json, TextSink& sink);
