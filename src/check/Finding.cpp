#include "check/Finding.h"

#include "base/TextFormat.h"

#include <cstring>

namespace {

// The one table of what the checker can say. The Japanese texts of the
// errors are the lines of the check's report, which the window shows too;
// the check takes them from here.
constexpr FindingKind kKinds[] = {
    {"file.missing", Severity::Error, u"ファイルがありません。", "The file does not exist.",
     "Check the path; a folder is not a file."},
    {"riff.not-riff", Severity::Error, u"RIFF形式ではありません。", "The file is not a RIFF file.",
     "Make sure it is a WAV file; an RF64 file counts as not RIFF."},
    {"riff.structure", Severity::Error, u"RIFF構造にエラーがあります。", "The RIFF structure has an error.",
     "List the chunks with --chunks to see where; a tidy copy (--tidy) may mend it."},
    {"format.missing", Severity::Error, u"フォーマット構造がありません。", "There is no format chunk.",
     "Export the file again from the program that made it."},
    {"data.missing", Severity::Error, u"データ構造がありません。", "There is no data chunk.",
     "Export the file again from the program that made it."},
    {"format.not-pcm", Severity::Error, u"PCMではありません。", "The audio is not PCM.",
     "Convert it to linear PCM."},
    {"format.sample-rate", Severity::Error, u"サンプリング周波数が0～19200Hzではありません。",
     "The sample rate is not from 1 to 192000 Hz.", "Resample it to a rate up to 192000 Hz."},
    {"format.bits", Severity::Error, u"ビット数が8/16/24Bitではありません。",
     "The sample size is not 8, 16 or 24 bits.", "Convert it to 8, 16 or 24-bit samples."},
    {"format.channels", Severity::Error, u"チャンネル数が1/2チャンネルではありません。",
     "The file has neither one nor two channels.", "Mix it down to mono or stereo."},
    {"data.size", Severity::Error, u"データ情報のサイズが正しくありません。", "The data size is not right.",
     "A data size of 0 often means an unfinished recording: try --tidy."},
    {"data.frames", Severity::Error, u"サンプル数が正しくありません。", "The number of sample frames is not right.",
     "The data holds no whole frame; export the file again."},

    // What keeps a path from being checked at all; never a line of the
    // report.
    {"file.unreadable", Severity::Error, u"ファイルを読めません。", "The file can't be opened for reading.",
     "Check the file's permissions, and that no other program holds it locked."},
    {"folder.unreadable", Severity::Error, u"フォルダを読めません。", "The folder can't be read.",
     "Check the folder's permissions."},
    {"folder.link-loop", Severity::Error, u"リンクが上のフォルダに戻っています。",
     "A link leads back to a folder above it; the walk does not follow it.", "Nothing to do, unless the link is a mistake."},
    {"file.broken-link", Severity::Error, u"リンク先がありません。", "A link leads to nothing.",
     "Mend or remove the link."},

    // What --md5 finds of a stored MD5 chunk; never a line of the report.
    {"data.md5-mismatch", Severity::Error, u"音声データのMD5が保存されたMD5と一致しません。",
     "The MD5 of the data chunk does not match the one stored in the MD5 chunk.",
     "The audio changed after its MD5 was stored: restore it from a copy that verifies; if the change is known, "
     "store a new MD5 with --tidy OUT --md5."},
    {"data.md5-size", Severity::Error, u"MD5チャンクのサイズが16バイトではありません。",
     "The MD5 chunk is not 16 bytes, so it holds no MD5 to compare.",
     "Store a new MD5 with --tidy OUT --md5 from a copy that is known to be good."},

    {"container.rf64", Severity::Warning, u"RF64形式のファイルです。", "The file is RF64, not RIFF.",
     "RF64 holds recordings over 4 GiB; convert it to RIFF if it fits, or use a tool that reads RF64."},
    {"riff.size-placeholder", Severity::Warning, u"RIFFのサイズが仮の値のままです（録音が終わっていない可能性があります）。",
     "The RIFF size is a placeholder, as an unfinished recording leaves it.",
     "Make a tidy copy with --tidy, which writes the sizes of what is there."},
    {"riff.size-mismatch", Severity::Warning, u"RIFFのサイズがファイルの大きさと合いません。",
     "The RIFF size runs past the end of the file.",
     "The file was cut short; get it again, or make a tidy copy with --tidy."},
    {"riff.trailing-bytes", Severity::Warning, u"RIFFチャンクの後ろに余分なデータがあります。",
     "There are bytes after the RIFF chunk.",
     "Some programs ignore them, some refuse the file; --chunks shows what they are."},
    {"data.size-placeholder", Severity::Warning, u"データのサイズが仮の値のままです（録音が終わっていない可能性があります）。",
     "The data size is a placeholder, as an unfinished recording leaves it.",
     "Make a tidy copy with --tidy, which writes the size of the audio that is there."},
    {"data.truncated", Severity::Warning, u"データがファイルの途中で切れています。",
     "The audio is cut short: the data chunk runs past the end of the file.",
     "Get the file again; --tidy makes a copy that declares the audio present."},
    {"data.partial-frame", Severity::Warning, u"データのサイズがブロックサイズの倍数ではありません。",
     "The data size is not a whole number of frames: the last frame is partial.",
     "Readers differ on the last frame: some drop it, some play it padded, some refuse the file; export the file again."},
    {"chunk.missing-pad", Severity::Warning, u"奇数サイズのチャンクにパディングのバイトがありません。",
     "A chunk of odd size has no pad byte after it.",
     "Strict readers lose their way after this chunk; export the file again."},
    {"format.duplicate", Severity::Warning, u"フォーマット構造が2つ以上あります。",
     "There is more than one format chunk.",
     "Readers differ on which one counts; export the file again."},
    {"format.block-align", Severity::Warning, u"ブロックサイズがフォーマットと合いません。",
     "The block align contradicts the channels and sample size.",
     "Readers that trust it play noise; export the file again."},
    {"format.byte-rate", Severity::Warning, u"バイトレートがフォーマットと合いません。",
     "The byte rate contradicts the sample rate and block align.",
     "Durations shown by players will be wrong; export the file again."},
    {"format.extensible-not-pcm", Severity::Warning, u"拡張フォーマットのサブフォーマットがPCMではありません。",
     "The extensible format's sub-format is not PCM, though the check takes it for PCM.",
     "The audio is not linear integer PCM (float, say); convert it if PCM is needed."},

    // What the metadata chunks say; --info shows them.
    {"bext.text-not-ascii", Severity::Warning, u"bextの文字列にASCII以外の文字があります。",
     "A text field of the bext chunk holds bytes that are not ASCII.",
     "Broadcast software reads bext text as ASCII; --info shows how the text decodes. Write it in ASCII."},
    {"bext.date-form", Severity::Warning, u"bextの日付がyyyy-mm-ddの形式ではありません。",
     "The bext OriginationDate is not in the form yyyy-mm-dd.",
     "Archives sort and search by it; set it as yyyy-mm-dd (the separator may be '-', '_', ':', ' ' or '.')."},
    {"bext.time-form", Severity::Warning, u"bextの時刻がhh:mm:ssの形式ではありません。",
     "The bext OriginationTime is not in the form hh:mm:ss.",
     "Set it as hh:mm:ss (the separator may be '-', '_', ':', ' ' or '.')."},
    {"bext.loudness-unset", Severity::Warning, u"bextのラウドネスの値がすべて0です。",
     "The bext chunk is version 2 or later, but its loudness fields are all 0.",
     "A field not measured holds 0x7FFF; 0 claims a measurement. Write the measured loudness (--loudness), or 0x7FFF."},
    {"bext.after-data", Severity::Warning, u"bextチャンクがデータの後ろにあります。",
     "The bext chunk comes after the data chunk.",
     "Players that read the file as it streams in never see it; put it before the audio."},
    {"info.text-undecodable", Severity::Warning, u"INFOの文字列がどの文字コードにも合いません。",
     "An INFO text fits no encoding: not UTF-8, code page 932 nor Latin-1.",
     "Each program shows it differently; --info shows its bytes. Write it again in UTF-8."},
    {"cue.past-end", Severity::Warning, u"キューポイントが音声の終わりを越えています。",
     "A cue point lies at or past the end of the audio.",
     "Editors drop it or move it to the end; set it inside the audio."},
    {"smpl.loop-past-end", Severity::Warning, u"ループの終わりが音声の終わりを越えています。",
     "A smpl loop ends at or past the end of the audio.",
     "The end is the loop's last frame: a sample count written there reads one frame past the audio. Set it one lower."},
    {"smpl.loop-reversed", Severity::Warning, u"ループの始まりが終わりより後ろにあります。",
     "A smpl loop starts after it ends.",
     "Samplers refuse or misplay the loop; set its start and end again."},
    {"smpl.loop-count", Severity::Warning, u"smplチャンクのループ数がサイズと合いません。",
     "The smpl loop count disagrees with the chunk's size.",
     "Readers that trust the count read past the loops, or miss some; export the file again."},
    {"adtl.unknown-cue", Severity::Warning, u"ラベルのキューポイントがありません。",
     "A label of the adtl list names a cue point that does not exist.",
     "The label shows nowhere; add the cue point or remove the label."},
    {"ixml.sample-rate", Severity::Warning, u"iXMLのサンプリング周波数がフォーマットと合いません。",
     "The iXML sample rate is not the format's.",
     "Timecode worked out from iXML is wrong; correct the iXML or the file's rate."},

    // What the audio itself shows; only --levels reads it.
    {"audio.silent-channel", Severity::Warning, u"デジタルゼロのままのチャンネルがあります。",
     "A channel is digital zero throughout (every sample 0) while another is not.",
     "A channel was not recorded, or was lost in a mix or a copy; check the routing, or deliver mono if that is meant."},
    {"audio.silent", Severity::Warning, u"音声全体が無音のしきい値より小さいです。",
     "The whole file is below the silence threshold.",
     "Listen to it: a muted input or a wrong source gives this; lower --silence-threshold if it is meant to be this quiet."},
};

void AppendFigure(std::u16string& text, std::string& message, const char16_t* label, const char* english,
                  std::int64_t figure)
{
    const std::string digits = std::to_string(figure);
    if (!text.empty())
        text += u", ";
    text += label;
    text += u' ';
    text.append(digits.begin(), digits.end());
    message += message.empty() ? "" : ", ";
    message += english;
    message += ' ';
    message += FormatCount(figure);
}

} // namespace

const FindingKind* FindingKinds(std::size_t& count)
{
    count = std::size(kKinds);
    return kKinds;
}

const FindingKind* FindFindingKind(std::string_view code)
{
    for (const FindingKind& kind : kKinds) {
        if (code == kind.code)
            return &kind;
    }
    return nullptr;
}

const char* SeverityName(Severity severity)
{
    return severity == Severity::Error ? "error" : "warning";
}

const char16_t* ReportLineText(std::string_view code)
{
    const FindingKind* kind = FindFindingKind(code);
    return kind ? kind->text : u"";
}

// A warning reads as a line of the report: the text, and the figures in
// brackets: "declared 0, actual 17,678, at offset 0" in English, the
// figures of more between the actual one and the offset.
Finding MakeFinding(const FindingKind& kind, std::optional<std::int64_t> offset, const std::string& chunk,
                    std::optional<std::int64_t> declared, std::optional<std::int64_t> actual,
                    std::span<const FindingFigure> more)
{
    Finding finding;
    finding.kind = &kind;
    finding.offset = offset;
    finding.chunk = chunk;
    finding.declared = declared;
    finding.actual = actual;
    std::u16string figures;
    std::string english;
    if (declared)
        AppendFigure(figures, english, u"宣言", "declared", *declared);
    if (actual)
        AppendFigure(figures, english, u"実際", "actual", *actual);
    for (const FindingFigure& figure : more)
        AppendFigure(figures, english, figure.label, figure.english, figure.value);
    if (offset)
        AppendFigure(figures, english, u"位置", "at offset", *offset);
    finding.text = WideString(kind.text);
    finding.message = kind.message;
    if (!figures.empty()) {
        finding.text += WideString(u" [" + figures + u"]");
        finding.message += " (" + english + ")";
    }
    return finding;
}
