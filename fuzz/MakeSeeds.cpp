// Writes the seed corpora of the fuzz targets into SEED-FOLDER/<target>/,
// and the hostile files of the regression corpus into
// REGRESSION-FOLDER/wave/, from the same builders the tests use.
#include "support/RiffBytes.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace {

bool WriteSeed(const std::string& folder, const std::string& name, const std::string& bytes)
{
    std::FILE* file = std::fopen((folder + "/" + name).c_str(), "wb");
    if (!file)
        return false;
    bool written = bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && written;
}

bool WriteAll(const std::string& root, const char* target, const std::vector<std::pair<std::string, std::string>>& files)
{
    for (const auto& [name, bytes] : files) {
        if (!WriteSeed(root + "/" + target, name, bytes)) {
            std::fprintf(stderr, "make-fuzz-seeds: can't write %s/%s/%s\n", root.c_str(), target, name.c_str());
            return false;
        }
    }
    return true;
}

// Text as the UTF-16 units the text targets read from pairs of bytes.
std::string Units(const std::u16string& text)
{
    std::string bytes;
    for (char16_t unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return bytes;
}

// An RF64 file: ds64 with these 64-bit sizes, a format, and a data chunk
// whose size field defers to ds64, holding this audio.
std::string Rf64(std::uint64_t riffSize, std::uint64_t dataSize, const std::string& audio)
{
    const std::string ds64 = RiffBytes().U64(riffSize).U64(dataSize).U64(dataSize / 4).U32(0).Bytes();
    return RiffBytes().Id("RF64").U32(0xFFFFFFFF).Id("WAVE").Chunk("ds64", ds64)
        .Chunk("fmt ", FormatBody(1, 2, 44100, 16)).ChunkWithSize("data", 0xFFFFFFFF, audio).Bytes();
}

// Every metadata chunk that --info reads, each with something to warn of:
// CP932 INFO text under a CSET, a version 2 bext with its coding history,
// cue points with labels (one for no point), a loop past the audio, acid,
// cart and an iXML of another rate.
std::string MetadataWave()
{
    RiffBytes cue;
    cue.U32(2).U32(1).U32(0).Id("data").U32(0).U32(0).U32(2).U32(2).U32(0).Id("data").U32(0).U32(0).U32(9);
    RiffBytes smpl;
    smpl.U32(0).U32(0).U32(22675).U32(60).U32(0).U32(0).U32(0).U32(1).U32(0);
    smpl.U32(1).U32(0).U32(1).U32(4).U32(0).U32(0);
    std::string bext(602, '\0');
    bext.replace(0, 4, "take");
    bext.replace(320, 18, "2024-05-0610:20:30");
    bext[346] = 2;
    const std::string adtl = RiffBytes().Chunk("labl", std::string("\1\0\0\0one\0", 8)).Chunk("note", std::string("\7\0\0\0x", 5)).Bytes();
    const std::string cart = "0101" + std::string(60, 't') + std::string(700, '\0');
    return Riff(RiffBytes()
                    .Chunk("CSET", std::string("\xA4\x03\x51\0\x11\0\1\0", 8))
                    .Raw(ListBytes("INFO", RiffBytes().Chunk("INAM", "\x93\xFA\x96\x7B").Bytes()))
                    .Chunk("fmt ", FormatBody(1, 1, 44100, 16))
                    .Chunk("bext", bext + "A=PCM\r\nA=PCM,T=x\r\n")
                    .Chunk("cue ", cue.Bytes())
                    .Raw(ListBytes("adtl", adtl))
                    .Chunk("smpl", smpl.Bytes())
                    .Chunk("acid", std::string("\3\0\0\0\x3C\0\0\0\0\0\0\0\4\0\0\0\4\0\4\0\0\0\xF0\x42", 24))
                    .Chunk("cart", cart)
                    .Chunk("iXML", "<BWFXML><FILE_SAMPLE_RATE>48000</FILE_SAMPLE_RATE></BWFXML>")
                    .Chunk("data", std::string(8, '\0'))
                    .Bytes());
}

std::vector<std::pair<std::string, std::string>> WaveSeeds()
{
    const std::string fmt = RiffBytes().Chunk("fmt ", FormatBody(1, 2, 44100, 16)).Bytes();
    const std::string data = RiffBytes().Chunk("data", std::string(16, '\0')).Bytes();
    const std::string info = RiffBytes().Id("LIST").U32(26).Id("INFO").Chunk("INAM", "take\0").Chunk("IART", "me").Bytes();
    return {
        {"sound", SoundWave()},
        {"float", Riff(RiffBytes().Chunk("fmt ", FormatBody(3, 2, 48000, 32)).Raw(data).Bytes())},
        {"extensible", Riff(RiffBytes().Chunk("fmt ", FormatBody(0xFFFE, 2, 96000, 24) + std::string(24, '\x01')).Raw(data).Bytes())},
        {"info-bext", Riff(info + RiffBytes().Chunk("bext", std::string(602, 'b')).Bytes() + fmt + data)},
        {"list-sizes", Riff(RiffBytes().Id("LIST").U32(3).Id("abcd").Id("LIST").U32(4).Id("fmt ").Bytes() + fmt + data)},
        {"data-zero", Riff(fmt + RiffBytes().Id("data").U32(0).Bytes()) + std::string(64, 'x')},
        {"data-first", Riff(data + fmt)},
        {"nested", Riff(Riff(Riff(fmt + data)))},
        {"not-riff", "junk" + SoundWave()},
        {"rf64", RiffBytes().Id("RF64").U32(0xFFFFFFFF).Id("WAVE").Chunk("ds64", std::string(28, '\0')).Raw(fmt).Raw(data).Bytes()},
        {"rf64-deferred", Rf64(92, 20, std::string(20, 'a'))},
        {"behind-riff", Riff(fmt) + RiffBytes().ChunkNoPad("odd ", "x").Raw(data).Bytes()},
        {"empty", ""},
        {"metadata", MetadataWave()},
    };
}

// Files written to break the reader: they belong to the regression corpus,
// which every build's tests walk.
std::vector<std::pair<std::string, std::string>> HostileWaves()
{
    const std::string fmt = RiffBytes().Chunk("fmt ", FormatBody(1, 2, 44100, 16)).Bytes();
    const std::string data = RiffBytes().Chunk("data", std::string(16, '\0')).Bytes();
    auto nested = [&](int levels) {
        RiffBytes bytes;
        const std::string inner = fmt + data;
        for (int level = 0; level < levels; ++level)
            bytes.Id("RIFF").U32(static_cast<std::uint32_t>(inner.size() + 4 + 12 * (levels - 1 - level))).Id("WAVE");
        return bytes.Raw(inner).Bytes();
    };
    std::vector<std::pair<std::string, std::string>> files = {
        {"riff-nested-256", nested(256)},
        {"riff-nested-257", nested(257)},
        {"riff-nested-5000", nested(5000)},
        {"info-length-fffffff0", RiffBytes().Id("LIST").U32(3).Id("INFO").Id("INAM").U32(0xFFFFFFF0).Raw("text").Bytes()},
        {"info-length-fffffff0-in-riff",
         Riff(RiffBytes().Id("LIST").U32(0xFFFFFFFF).Id("INFO").Id("INAM").U32(0xFFFFFFF0).Raw("text").Bytes() + fmt + data)},
        {"data-size-zero-early", Riff(RiffBytes().Id("data").U32(0).Bytes() + fmt) + std::string(4096, '\x7f')},
        {"sizes-overflow-32-bits",
         RiffBytes().Id("RIFF").U32(0xFFFFFFFF).Id("WAVE").Raw(fmt).Id("junk").U32(0xFFFFFFF0).Raw(data).Bytes()},
        {"odd-sizes-everywhere", Riff(RiffBytes().ChunkNoPad("odd1", "x").ChunkNoPad("odd2", "yyy").Raw(fmt).Bytes())},
        {"many-data-chunks", Riff(fmt + [&] {
             std::string many;
             for (int i = 0; i < 3000; ++i)
                 many += data;
             return many;
         }())},
        {"many-fmt-words-not-riff", [] {
             std::string words;
             for (int i = 0; i < 5000; ++i)
                 words += i % 2 ? "fmt " : "data";
             return words;
         }()},
    };
    // The walk of the layout and of the tidy copy stood still on a data
    // size of -8 read as a signed number.
    files.push_back({"rf64-ds64-data-size-minus-8", Rf64(92, ~std::uint64_t{7}, std::string(20, 'a'))});
    std::string listWords;
    for (int i = 0; i < 20000; ++i)
        listWords += "LIST";
    files.push_back({"list-words-only", listWords});
    for (std::uint32_t size = 0; size <= 3; ++size)
        files.push_back({"list-size-" + std::to_string(size), Riff(RiffBytes().Id("LIST").U32(size).Id("INFO").Raw(fmt + data).Bytes())});
    return files;
}

std::vector<std::pair<std::string, std::string>> LayoutSeeds()
{
    return {
        {"main", Units(u"; the path\r\n[Viewer]\r\nWidth=240\r\n[EditableText]\r\nName=WaveFilePath\r\n"
                       u"Option=SingleLine,TabStop\r\n\r\n[EditableText]\r\nName=Message\r\nText=\"処理中...\"\r\n"
                       u"// comment\r\n=x\r\nx=\r\na=b=c\r\n[]\r\n[x\r\n ;lead\r\n[a=b]\r\nLF\nonly\n")},
        {"lf-only", Units(u"[Viewer]\nName=x\n")},
    };
}

std::vector<std::pair<std::string, std::string>> CsvSeeds()
{
    return {
        {"quotes", Units(u"\"a,b\",c,a\"b,c\"d\r\n\"x\\\"y\\n\"")},
        {"comments", Units(u"/* x */a,b // tail\nnext,row\n/* open")},
        {"escapes", Units(u"a\\nb,\"a\\tb\\\\\",,\r,")},
    };
}

std::vector<std::pair<std::string, std::string>> DescriptionSeeds()
{
    return {
        {"wave", Units(u"[Riff]\r\nType=Wave\r\n[Format]\r\nFormat=PCM\r\nCh=2\r\nBit=16\r\nFreq=44100\r\n[Data]\r\n")},
        {"odd", Units(u"[Riff]\r\nType=AVI \r\n[Format]\r\nBit=24\r\nCh=65537\r\nFreq=-1\r\nFormat=PCM\r\n[Riff]\r\n"
                      u"[Data]\r\n[RF64]\r\n[fmt ]\r\n[Format]\r\nFormat=float\r\n")},
    };
}

// Files whose writing takes the writer's less travelled roads: headers
// never finished, sizes past the end, lists, odd bodies, a format longer
// than 18 bytes.
std::vector<std::pair<std::string, std::string>> WriterSeeds()
{
    const std::string fmt = RiffBytes().Chunk("fmt ", FormatBody(1, 2, 44100, 16)).Bytes();
    const std::string audio(3001, 'a');
    const std::string frames(3000, 'f');
    const std::string info = RiffBytes().Id("LIST").U32(16).Id("INFO").Chunk("INAM", "take").Bytes();
    return {
        {"unfinished-0", RiffBytes().Id("RIFF").U32(0).Id("WAVE").Raw(fmt).Id("data").U32(0).Raw(audio).Bytes()},
        {"unfinished-ffffffff", RiffBytes().Id("RIFF").U32(0xFFFFFFFF).Id("WAVE").Raw(fmt).Id("data").U32(0xFFFFFFFF).Raw(audio).Bytes()},
        {"list-odd", Riff(fmt + info + RiffBytes().Chunk("odd ", "xyz").Chunk("data", std::string(5000, 'd')).Bytes())},
        {"format-40", Riff(RiffBytes().Chunk("fmt ", FormatBody(0xFFFE, 2, 44100, 16) + std::string(24, '\0')).Bytes())},
        {"junk-behind", Riff(fmt) + "junk"},
        {"rf64", Rf64(4 + 36 + fmt.size() + 8 + frames.size() + info.size(), frames.size(), frames + info)},
        {"rf64-unfinished-0", Rf64(0, 0, frames + info)},
        {"rf64-cut-short", Rf64(1 << 20, 1 << 20, frames)},
    };
}

std::vector<std::pair<std::string, std::string>> AttributeSeeds()
{
    std::u16string zero(1, u'\0');
    return {
        {"values", Units(u"Color" + zero + u"FF102030" + zero + u"Size" + zero + u"10, 20,1.5" + zero + u"Text" + zero +
                         u"\"Hello\"\\n\\q\\" + zero + u"Option" + zero + u"Disable,,TabStop" + zero + u"Hex" + zero +
                         u"  0x1f,zz")},
    };
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: make-fuzz-seeds SEED-FOLDER REGRESSION-FOLDER\n");
        return 2;
    }
    const std::string root = argv[1];
    const std::string regressions = argv[2];
    if (!WriteAll(regressions, "wave", HostileWaves()))
        return 1;
    const std::pair<const char*, std::vector<std::pair<std::string, std::string>>> corpora[] = {
        {"wave", WaveSeeds()},         {"layout", LayoutSeeds()},          {"csv", CsvSeeds()},
        {"attributes", AttributeSeeds()}, {"description", DescriptionSeeds()}, {"writer", WriterSeeds()}};
    for (const auto& [target, seeds] : corpora) {
        if (!WriteAll(root, target, seeds))
            return 1;
    }
    return 0;
}
