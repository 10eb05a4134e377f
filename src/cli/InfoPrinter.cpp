#include "cli/InfoPrinter.h"

#include "base/TextFormat.h"
#include "base/Utf8.h"
#include "cli/InfoRecord.h"
#include "wave/AcidFields.h"
#include "wave/AdtlLabels.h"
#include "wave/BextFields.h"
#include "wave/CartFields.h"
#include "wave/CuePoints.h"
#include "wave/FileLayout.h"
#include "wave/IxmlFields.h"
#include "wave/ListEntries.h"
#include "wave/MetadataScan.h"
#include "wave/SamplerFields.h"

#include <cmath>

namespace {

struct MetadataFacts {
    std::uint32_t sampleRate;
    std::optional<std::uint16_t> codePage;
    std::vector<AdtlLabel> labels;  // of every adtl list
};

// At least two digits, as a clock writes hours, minutes and seconds.
std::string TwoDigits(std::uint64_t value)
{
    return (value < 10 ? "0" : "") + std::to_string(value);
}

// A place in frames, and in seconds at the format's rate when it has one.
void Place(InfoRecord& record, const std::string& name, std::uint64_t frames, std::uint32_t rate)
{
    record.Number(name, static_cast<std::int64_t>(frames));
    if (rate)
        record.Raw(name + "Seconds", FormatFixed(double(frames) / rate, 6), FormatFixed(double(frames) / rate, 6) + " s");
}

void PrintBext(InfoRecord& record, BodySpan body, const MetadataFacts& facts)
{
    const BextFields bext = ReadBextFields(body);
    record.Text("Description", DecodeMetadataText(bext.description, std::nullopt));
    record.Text("Originator", DecodeMetadataText(bext.originator, std::nullopt));
    record.Text("OriginatorReference", DecodeMetadataText(bext.originatorReference, std::nullopt));
    record.Text("OriginationDate", DecodeMetadataText(bext.originationDate, std::nullopt));
    record.Text("OriginationTime", DecodeMetadataText(bext.originationTime, std::nullopt));
    record.Number("TimeReference", static_cast<std::int64_t>(bext.timeReference));
    if (facts.sampleRate) {
        const std::uint64_t seconds = bext.timeReference / facts.sampleRate;
        const std::string clock = TwoDigits(seconds / 3600) + ":" + TwoDigits(seconds / 60 % 60) + ":" +
                                  TwoDigits(seconds % 60) + " + " + std::to_string(bext.timeReference % facts.sampleRate) +
                                  " samples at " + std::to_string(facts.sampleRate) + " Hz";
        record.String("TimeReferenceClock", clock);
    }
    record.Number("Version", bext.version);
    std::string umid;
    for (std::uint8_t byte : bext.umid) {
        umid += "0123456789ABCDEF"[byte >> 4];
        umid += "0123456789ABCDEF"[byte & 15];
    }
    record.String("UMID", umid);
    record.String("UMIDKind", bext.umid.size() == 64 ? "extended" : bext.umid.empty() ? "none" : "basic");
    if (bext.version >= 2) {
        const std::pair<const char*, std::int16_t> loudness[] = {
            {"LoudnessValue", bext.loudnessValue}, {"LoudnessRange", bext.loudnessRange},
            {"MaxTruePeakLevel", bext.maxTruePeakLevel}, {"MaxMomentaryLoudness", bext.maxMomentaryLoudness},
            {"MaxShortTermLoudness", bext.maxShortTermLoudness}};
        const char* units[] = {"LUFS", "LU", "dBTP", "LUFS", "LUFS"};
        for (std::size_t i = 0; i < std::size(loudness); ++i) {
            if (loudness[i].second == kBextLoudnessUnset)
                record.Raw(loudness[i].first, "null", "unset");
            else
                record.Raw(loudness[i].first, FormatFixed(loudness[i].second / 100.0, 2),
                           FormatFixed(loudness[i].second / 100.0, 2) + " " + units[i]);
        }
    }
    std::vector<MetadataText> history;
    for (BodySpan line : bext.codingHistory)
        history.push_back(DecodeMetadataText(line, std::nullopt));
    record.Lines("CodingHistory", history);
}

void PrintLabels(InfoRecord& record, std::uint32_t cueId, const MetadataFacts& facts)
{
    for (const AdtlLabel& label : facts.labels) {
        if (label.cueId == cueId)
            record.Text(label.id, DecodeMetadataText(label.text, facts.codePage));
    }
}

void PrintCue(InfoRecord& record, BodySpan body, const MetadataFacts& facts)
{
    record.BeginList("points");
    for (const CuePoint& point : ReadCuePoints(body)) {
        record.BeginObject("point " + std::to_string(point.id));
        record.JsonNumber("id", point.id);
        Place(record, "sample", point.sampleOffset, facts.sampleRate);
        record.Number("position", point.position);
        PrintLabels(record, point.id, facts);
        record.EndObject();
    }
    record.EndList();
}

void PrintAdtl(InfoRecord& record, const MetadataChunk& chunk, const MetadataFacts& facts)
{
    record.BeginList("labels");
    for (const AdtlLabel& label : ReadAdtlLabels(ReadListEntries(chunk.body, chunk.offset + 12))) {
        record.BeginObject(label.id + " at " + FormatCount(label.offset));
        record.JsonString("id", label.id);
        record.JsonNumber("offset", label.offset);
        record.Number("cue", label.cueId);
        if (label.id == "ltxt") {
            record.Number("length", label.length);
            record.String("purpose", IdText(label.purpose));
        }
        record.Text("text", DecodeMetadataText(label.text, facts.codePage));
        record.EndObject();
    }
    record.EndList();
}

void PrintSampler(InfoRecord& record, BodySpan body, const MetadataFacts& facts)
{
    const SamplerFields smpl = ReadSamplerFields(body);
    record.Number("manufacturer", smpl.manufacturer);
    record.Number("product", smpl.product);
    record.Number("samplePeriod", smpl.samplePeriod);
    record.Number("unityNote", smpl.unityNote);
    record.Number("pitchFraction", smpl.pitchFraction);
    record.Number("smpteFormat", smpl.smpteFormat);
    record.Number("smpteOffset", smpl.smpteOffset);
    record.Number("loopCount", smpl.loopCount);
    record.Number("samplerDataBytes", smpl.samplerDataBytes);
    record.BeginList("loops");
    for (const SamplerLoop& loop : smpl.loops) {
        record.BeginObject("loop " + std::to_string(loop.cuePointId));
        record.JsonNumber("cuePointId", loop.cuePointId);
        record.Number("type", loop.type);
        Place(record, "start", loop.start, facts.sampleRate);
        Place(record, "end", loop.end, facts.sampleRate);
        record.Number("fraction", loop.fraction);
        record.Number("playCount", loop.playCount);
        record.EndObject();
    }
    record.EndList();
}

void PrintAcid(InfoRecord& record, BodySpan body)
{
    const AcidFields acid = ReadAcidFields(body);
    // A tempo that is no number is said as none, as JSON has no NaN.
    if (std::isfinite(acid.tempo))
        record.Raw("tempo", FormatFixed(acid.tempo, 3), FormatFixed(acid.tempo, 3));
    else
        record.Raw("tempo", "null", "none");
    record.Number("beats", acid.beats);
    record.String("meter", std::to_string(acid.meterNumerator) + "/" + std::to_string(acid.meterDenominator));
    if (acid.rootNoteSet)
        record.Number("rootNote", acid.rootNote);
    else
        record.Raw("rootNote", "null", "none");
    record.Raw("oneShot", acid.oneShot ? "true" : "false", acid.oneShot ? "yes" : "no");
}

void PrintCart(InfoRecord& record, BodySpan body, const MetadataFacts& facts)
{
    const CartFields cart = ReadCartFields(body);
    const std::pair<const char*, BodySpan> texts[] = {
        {"version", cart.version},     {"title", cart.title},         {"artist", cart.artist},
        {"cutId", cart.cutId},         {"clientId", cart.clientId},   {"category", cart.category},
        {"startDate", cart.startDate}, {"startTime", cart.startTime}, {"endDate", cart.endDate},
        {"endTime", cart.endTime}};
    for (const auto& [name, bytes] : texts)
        record.Text(name, DecodeMetadataText(bytes, facts.codePage));
    record.Number("levelReference", cart.levelReference);
}

void PrintIxml(InfoRecord& record, BodySpan body)
{
    const IxmlFields ixml = ReadIxmlFields(body);
    const std::pair<const char*, const std::optional<std::string>*> fields[] = {
        {"fileSampleRate", &ixml.fileSampleRate},
        {"timecodeRate", &ixml.timecodeRate},
        {"timecodeFlag", &ixml.timecodeFlag},
        {"timestampSampleRate", &ixml.timestampSampleRate},
        {"timestampSamplesSinceMidnightHi", &ixml.timestampSamplesHigh},
        {"timestampSamplesSinceMidnightLo", &ixml.timestampSamplesLow}};
    for (const auto& [name, value] : fields) {
        if (*value)
            record.String(name, **value);
    }
    record.Text("document", DecodeMetadataText(ixml.document, std::nullopt));
}

void PrintChunk(InfoRecord& record, const MetadataChunk& chunk, const MetadataFacts& facts)
{
    const std::string name = chunk.listType.empty() ? chunk.id : chunk.id + " " + chunk.listType;
    record.BeginObject(name + " at " + FormatCount(chunk.offset) + ", " + FormatCount(chunk.declaredSize) + " bytes");
    record.JsonNumber("offset", chunk.offset);
    record.JsonString("id", chunk.id);
    if (!chunk.listType.empty())
        record.JsonString("list", chunk.listType);
    record.JsonNumber("size", chunk.declaredSize);
    const BodySpan body = chunk.body;
    if (chunk.listType == "INFO") {
        record.BeginList("entries");
        for (const ListEntry& entry : ReadListEntries(body, chunk.offset + 12)) {
            record.BeginObject(IdText(entry.id) + " at " + FormatCount(entry.offset));
            record.JsonString("id", IdText(entry.id));
            record.JsonNumber("offset", entry.offset);
            record.Text("text", DecodeMetadataText(entry.body, facts.codePage));
            record.EndObject();
        }
        record.EndList();
    } else if (chunk.listType == "adtl") {
        PrintAdtl(record, chunk, facts);
    } else if (chunk.id == "bext") {
        PrintBext(record, body, facts);
    } else if (chunk.id == "cue ") {
        PrintCue(record, body, facts);
    } else if (chunk.id == "smpl") {
        PrintSampler(record, body, facts);
    } else if (chunk.id == "acid") {
        PrintAcid(record, body);
    } else if (chunk.id == "cart") {
        PrintCart(record, body, facts);
    } else if (chunk.id == "iXML") {
        PrintIxml(record, body);
    } else if (chunk.id == "CSET") {
        const char* names[] = {"codePage", "countryCode", "language", "dialect"};
        for (std::size_t i = 0; i < std::size(names); ++i)
            record.Number(names[i], BodyU16(body, i * 2));
    }
    record.EndObject();
}

} // namespace

bool PrintInfo(const WideString& path, bool json, TextSink& sink)
{
    std::string head;
    if (json) {
        head = "{\"path\": ";
        AppendJsonString(head, path.View());
    }
    auto problem = [&](const std::string& what) {
        if (json) {
            head += ", \"error\": ";
            AppendJsonString(head, Utf8ToWide(what));
            sink.Put(head + "}");
        } else {
            sink.Put("(" + what + ")\n");
        }
        return false;
    };
    FileLayout layout(path, {TreeForm::SlotsOnly, Rf64Reading::NameOnly});
    if (!layout.IsExistingFile())
        return problem("no such file");
    if (!layout.IsOpen())
        return problem("can't be opened for reading");
    MetadataScan scan;
    StreamGuard guard;
    const MetadataScanResult result = ScanMetadata(layout.AcquireStream(guard), layout.GetFileSize(), scan);
    if (result == MetadataScanResult::NotRiff)
        return problem(scan.problem.empty() ? "not a RIFF WAVE file" : scan.problem);
    if (result == MetadataScanResult::ReadFailed)
        return problem("read error");

    MetadataFacts facts{scan.sampleRate, scan.codePage, {}};
    for (const MetadataChunk& chunk : scan.chunks) {
        if (chunk.listType == "adtl") {
            for (AdtlLabel& label : ReadAdtlLabels(ReadListEntries(chunk.body, chunk.offset + 12)))
                facts.labels.push_back(label);
        }
    }
    InfoRecord record(json);
    record.BeginList(json ? "chunks" : "");
    for (const MetadataChunk& chunk : scan.chunks)
        PrintChunk(record, chunk, facts);
    record.EndList();
    if (scan.cutShort)
        record.Raw("cutShort", "true", "more metadata than is shown: past 4,096 chunks or 16 MiB, the rest left out");
    if (json)
        sink.Put(head + ", " + record.Output() + "}");
    else
        sink.Put(scan.chunks.empty() ? "no metadata chunks\n" : record.Output());
    return true;
}
