#include "cli/Md5Verdict.h"

#include "base/TextFormat.h"
#include "base/Utf8.h"
#include "cli/CheckPrinter.h"

namespace {

const char* OutcomeName(Md5Outcome outcome)
{
    switch (outcome) {
    case Md5Outcome::Match:
        return "match";
    case Md5Outcome::Mismatch:
        return "mismatch";
    case Md5Outcome::WrongSize:
        return "wrong-size";
    case Md5Outcome::NoneStored:
        break;
    }
    return "none-stored";
}

} // namespace

// A chunk of 16 bytes whose bytes can't be read counts as none stored: the
// file ends inside it.
Md5Verdict JudgeMd5(const platform::Md5Digest& computed, const StoredMd5& stored)
{
    Md5Verdict verdict;
    verdict.computed = computed;
    verdict.stored = stored;
    if (stored.position >= 0 && stored.size != kMd5ChunkBytes) {
        verdict.outcome = Md5Outcome::WrongSize;
        verdict.findings.push_back(
            MakeFinding(*FindFindingKind("data.md5-size"), stored.position, "MD5 ", stored.size, std::nullopt));
    } else if (stored.read) {
        verdict.outcome = stored.digest == computed ? Md5Outcome::Match : Md5Outcome::Mismatch;
        if (verdict.outcome == Md5Outcome::Mismatch)
            verdict.findings.push_back(
                MakeFinding(*FindFindingKind("data.md5-mismatch"), stored.position, "MD5 ", std::nullopt, std::nullopt));
    }
    return verdict;
}

std::string FormatMd5Text(const Md5Verdict& verdict)
{
    std::string text = "md5: computed " + Md5Hex(verdict.computed);
    if (verdict.outcome == Md5Outcome::WrongSize)
        text += ", stored chunk of " + FormatCount(verdict.stored.size) + " bytes, not 16";
    else if (verdict.outcome == Md5Outcome::NoneStored)
        text += ", none stored";
    else
        text += ", stored " + Md5Hex(verdict.stored.digest) + ", " + OutcomeName(verdict.outcome);
    text += "\n";
    for (const Finding& finding : verdict.findings)
        text += WideToUtf8(finding.text.View()) + "\n";
    return text;
}

std::string FormatMd5Json(const Md5Verdict& verdict)
{
    const bool stored = verdict.outcome == Md5Outcome::Match || verdict.outcome == Md5Outcome::Mismatch;
    std::string json = "\"md5\": {\"computed\": \"" + Md5Hex(verdict.computed) + "\", \"stored\": " +
                       (stored ? "\"" + Md5Hex(verdict.stored.digest) + "\"" : std::string("null")) +
                       ", \"outcome\": \"" + OutcomeName(verdict.outcome) + "\", \"findings\": [";
    for (std::size_t f = 0; f < verdict.findings.size(); ++f) {
        json += f ? ", " : "";
        AppendFindingJson(json, verdict.findings[f]);
    }
    return json + "]}";
}
