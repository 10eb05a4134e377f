#pragma once

#include "base/WideString.h"
#include "wave/FileLayout.h"

#include <string>
#include <vector>

// What the tidy copy reads of its input before it writes: the registry
// alone for the format, and an RF64 file as RF64 whatever ids it holds.
constexpr LayoutReading kTidyReading{TreeForm::SlotsOnly, Rf64Reading::InPlaceOfWalk};

// A mended copy of the input, a wave file: every chunk copied as it stands,
// only the sizes written anew. The chunks that a RIFF size too small left
// outside the RIFF chunk are taken back into it, declared sizes that run
// past the end of the file become what is there, and a data size that a
// recording never finished (0, 0xFFFFFFFF, past the end) becomes the whole
// frames of audio up to the chunks written behind it.
//
// The copy goes to output, which must not exist yet, through a temporary
// file beside it (output's name and ".sondara-check-unfinished") that is
// flushed and renamed at the end; one that an earlier tidy of the same
// output left is removed first. The input is only read. The copy is
// refused, with the reason in problem, wherever something would be lost or
// the end of the audio can't be told for certain; nothing is left behind
// then. changes receives what the copy does differently from the input,
// one line each. The input is read through its layout's one open of it.
// With storeMd5 the copy ends in an MD5 chunk of its own audio, in place
// of any MD5 chunk of the input.
bool MakeTidyCopy(FileLayout& input, const WideString& output, std::vector<std::string>& changes,
                  std::string& problem, bool storeMd5 = false);
