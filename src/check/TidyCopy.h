#pragma once

#include "base/WideString.h"

#include <string>
#include <vector>

// A mended copy of a wave file, written by the document's own writer: the
// chunks that a RIFF size too small left outside the RIFF chunk are taken
// back into it, declared sizes that run past the end of the file (or a
// data size of 0, as a recording that was never finished leaves it) become
// what is there, and the size fields are written anew.
//
// The copy goes to output, which must not exist yet, through a temporary
// file beside it that is renamed at the end; the input is only read. It is
// refused, with the reason in problem, wherever the writer would lose
// something: bytes outside every chunk it keeps, a format chunk longer than
// the 18 bytes that it writes, a second RIFF chunk. changes receives what
// the copy does differently from the input, one line each.
bool MakeTidyCopy(const WideString& input, const WideString& output, std::vector<std::string>& changes,
                  std::string& problem);
