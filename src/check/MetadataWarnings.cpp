#include "check/MetadataWarnings.h"

#include "wave/AdtlLabels.h"
#include "wave/BextFields.h"
#include "wave/CuePoints.h"
#include "wave/IxmlFields.h"
#include "wave/ListEntries.h"
#include "wave/MetadataScan.h"
#include "wave/MetadataText.h"
#include "wave/SamplerFields.h"

#include <set>

namespace {

void Warn(std::vector<Finding>& warnings, const char* code, std::int64_t offset, const std::string& chunk,
          std::optional<std::int64_t> declared = std::nullopt, std::optional<std::int64_t> actual = std::nullopt)
{
    warnings.push_back(MakeFinding(*FindFindingKind(code), offset, chunk, declared, actual));
}

bool IsDigits(BodySpan text, std::size_t at, std::size_t count, int most)
{
    int value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return false;
        value = value * 10 + (text[i] - '0');
    }
    return value <= most;
}

// Three numbers of two digits (four for a year) between the separators
// that broadcast writers use; an empty field is unset, not wrong.
bool IsInForm(BodySpan text, bool date)
{
    static constexpr std::string_view kSeparators = "-_: .";
    const std::size_t first = date ? 4 : 2;
    if (text.empty())
        return true;
    if (text.size() != first + 6 || kSeparators.find(static_cast<char>(text[first])) == std::string_view::npos ||
        kSeparators.find(static_cast<char>(text[first + 3])) == std::string_view::npos)
        return false;
    if (date)
        return IsDigits(text, 0, 4, 9999) && IsDigits(text, 5, 2, 12) && IsDigits(text, 8, 2, 31);
    return IsDigits(text, 0, 2, 23) && IsDigits(text, 3, 2, 59) && IsDigits(text, 6, 2, 59);
}

bool IsAscii(BodySpan text)
{
    for (std::uint8_t byte : text) {
        if (byte >= 0x80)
            return false;
    }
    return true;
}

void CheckBext(const MetadataChunk& chunk, std::vector<Finding>& warnings)
{
    const BextFields bext = ReadBextFields(chunk.body);
    bool ascii = IsAscii(bext.description) && IsAscii(bext.originator) && IsAscii(bext.originatorReference) &&
                 IsAscii(bext.originationDate) && IsAscii(bext.originationTime);
    for (BodySpan line : bext.codingHistory)
        ascii = ascii && IsAscii(line);
    if (!ascii)
        Warn(warnings, "bext.text-not-ascii", chunk.offset, "bext");
    if (!IsInForm(bext.originationDate, true))
        Warn(warnings, "bext.date-form", chunk.offset, "bext");
    if (!IsInForm(bext.originationTime, false))
        Warn(warnings, "bext.time-form", chunk.offset, "bext");
    if (bext.version >= 2 && chunk.body.size() >= kBextFixedBytes && bext.loudnessValue == 0 &&
        bext.loudnessRange == 0 && bext.maxTruePeakLevel == 0 && bext.maxMomentaryLoudness == 0 &&
        bext.maxShortTermLoudness == 0)
        Warn(warnings, "bext.loudness-unset", chunk.offset, "bext", bext.version, std::nullopt);
    if (chunk.afterData)
        Warn(warnings, "bext.after-data", chunk.offset, "bext");
}

void CheckSampler(const MetadataChunk& chunk, std::optional<std::int64_t> frames, std::vector<Finding>& warnings)
{
    const SamplerFields smpl = ReadSamplerFields(chunk.body);
    // The loops that the size leaves room for beside the header and the
    // sampler's own data.
    const std::int64_t room = std::int64_t{chunk.declaredSize} - std::int64_t{kSamplerHeaderBytes} - smpl.samplerDataBytes;
    const std::int64_t fits = room < 0 ? 0 : room / std::int64_t{kSamplerLoopBytes};
    if (chunk.declaredSize >= kSamplerHeaderBytes &&
        (room < 0 || room % std::int64_t{kSamplerLoopBytes} != 0 || fits != smpl.loopCount))
        Warn(warnings, "smpl.loop-count", chunk.offset, "smpl", smpl.loopCount, fits);
    for (const SamplerLoop& loop : smpl.loops) {
        if (loop.start > loop.end)
            Warn(warnings, "smpl.loop-reversed", chunk.offset, "smpl", loop.start, loop.end);
        if (frames && loop.end >= *frames)
            Warn(warnings, "smpl.loop-past-end", chunk.offset, "smpl", loop.end, *frames);
    }
}

void CheckLabels(const std::vector<MetadataChunk>& chunks, const std::set<std::uint32_t>& cueIds,
                 std::vector<Finding>& warnings)
{
    for (const MetadataChunk& chunk : chunks) {
        if (chunk.listType != "adtl")
            continue;
        for (const AdtlLabel& label : ReadAdtlLabels(ReadListEntries(chunk.body, chunk.offset + 12))) {
            if (!cueIds.count(label.cueId))
                Warn(warnings, "adtl.unknown-cue", label.offset, label.id, label.cueId, std::nullopt);
        }
    }
}

} // namespace

void FindMetadataWarnings(FileStream& stream, std::int64_t fileSize, std::vector<Finding>& warnings)
{
    MetadataScan scan;
    if (ScanMetadata(stream, fileSize, scan) != MetadataScanResult::Scanned)
        return;
    std::set<std::uint32_t> cueIds;
    for (const MetadataChunk& chunk : scan.chunks) {
        if (chunk.id == "bext") {
            CheckBext(chunk, warnings);
        } else if (chunk.listType == "INFO") {
            for (const ListEntry& entry : ReadListEntries(chunk.body, chunk.offset + 12)) {
                if (IsUndecodable(DecodeMetadataText(entry.body, scan.codePage)))
                    Warn(warnings, "info.text-undecodable", entry.offset, IdText(entry.id));
            }
        } else if (chunk.id == "cue ") {
            for (const CuePoint& point : ReadCuePoints(chunk.body)) {
                cueIds.insert(point.id);
                if (scan.frameCount && point.sampleOffset >= *scan.frameCount)
                    Warn(warnings, "cue.past-end", chunk.offset, "cue ", point.sampleOffset, *scan.frameCount);
            }
        } else if (chunk.id == "smpl") {
            CheckSampler(chunk, scan.frameCount, warnings);
        } else if (chunk.id == "iXML") {
            const std::optional<std::uint64_t> rate = IxmlNumber(ReadIxmlFields(chunk.body).fileSampleRate);
            if (rate && scan.sampleRate && *rate != scan.sampleRate)
                Warn(warnings, "ixml.sample-rate", chunk.offset, "iXML", static_cast<std::int64_t>(*rate), scan.sampleRate);
        }
    }
    CheckLabels(scan.chunks, cueIds, warnings);
}
