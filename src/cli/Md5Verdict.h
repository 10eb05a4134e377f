#pragma once

#include "check/Finding.h"
#include "platform/Md5.h"
#include "wave/Md5Chunk.h"

#include <string>
#include <vector>

// What --md5 says of a file: the MD5 of its audio beside the one its MD5
// chunk stores, and the findings of that comparison.
enum class Md5Outcome { Match, Mismatch, NoneStored, WrongSize };

struct Md5Verdict {
    platform::Md5Digest computed{};
    StoredMd5 stored;
    Md5Outcome outcome = Md5Outcome::NoneStored;
    std::vector<Finding> findings; // each an error: the file is not sound
};

Md5Verdict JudgeMd5(const platform::Md5Digest& computed, const StoredMd5& stored);
// "md5: computed …, stored …, match" and a line for each finding, each
// ending in LF.
std::string FormatMd5Text(const Md5Verdict& verdict);
// The member "md5" of a file's JSON object: computed, stored (or null),
// outcome and findings.
std::string FormatMd5Json(const Md5Verdict& verdict);
