// Writes the sample files of the repository into the folder given as the
// only argument: small WAV files that show the check's common answers.
#include "base/Utf8.h"
#include "layouttext/LayoutDocument.h"
#include "platform/FileSystem.h"
#include "wave/Chunk.h"
#include "wave/WaveDocument.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

void PutU16(std::string& out, std::uint16_t value)
{
    out.push_back(static_cast<char>(value & 0xFF));
    out.push_back(static_cast<char>(value >> 8));
}

void PutU32(std::string& out, std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

std::string ChunkBytes(const char* id, const std::string& body)
{
    std::string out(id, 4);
    PutU32(out, static_cast<std::uint32_t>(body.size()));
    out += body;
    if (body.size() % 2 != 0)
        out.push_back('\0');
    return out;
}

std::string Format(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate, std::uint16_t bits)
{
    std::string body;
    auto blockAlign = static_cast<std::uint16_t>(channels * bits / 8);
    PutU16(body, tag);
    PutU16(body, channels);
    PutU32(body, rate);
    PutU32(body, rate * blockAlign);
    PutU16(body, blockAlign);
    PutU16(body, bits);
    return ChunkBytes("fmt ", body);
}

std::string Riff(const std::string& children)
{
    std::string out = "RIFF";
    PutU32(out, static_cast<std::uint32_t>(children.size() + 4));
    return out + "WAVE" + children;
}

// A tenth of a second of a 440 Hz tone.
std::string ToneFrames(std::uint32_t rate, std::uint16_t channels, bool asFloat)
{
    std::string out;
    const double pi = 3.14159265358979323846;
    for (std::uint32_t i = 0; i < rate / 10; ++i) {
        double sample = 0.25 * std::sin(2 * pi * 440 * i / rate);
        for (std::uint16_t c = 0; c < channels; ++c) {
            if (asFloat) {
                float value = static_cast<float>(sample);
                std::uint32_t bits;
                static_assert(sizeof bits == sizeof value);
                __builtin_memcpy(&bits, &value, sizeof bits);
                PutU32(out, bits);
            } else {
                PutU16(out, static_cast<std::uint16_t>(static_cast<std::int16_t>(sample * 32767)));
            }
        }
    }
    return out;
}

bool WriteFile(const std::string& folder, const char* name, const std::string& bytes)
{
    std::string path = folder + "/" + name;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return false;
    bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && written;
}

// A recording whose header was never finished, as a recorder that stopped
// short leaves it: the header comes from a chunk description through the
// document's writer, which writes the data chunk empty; the audio follows,
// and the RIFF size goes back to 0.
bool WriteUnfinished(const std::string& folder, const char* name, const std::string& audio)
{
    LayoutDocument description;
    description.Parse(WideString(u"[Riff]\r\nType=Wave\r\n[Format]\r\nFormat=PCM\r\nCh=2\r\nBit=16\r\n"
                                 u"Freq=44100\r\n[Data]\r\n"));
    WaveDocument document;
    std::unique_ptr<Chunk> root;
    if (!document.CreateChunk(ChunkIdFromName(WideString(u"Riff")), root) || !root->LoadDescription(description))
        return false;
    const WideString path(Utf8ToWide(folder + "/" + name));
    platform::RemoveFile(path.View());
    FileStream file;
    if (!file.CreateNew(path, false) || !root->Write(file))
        return false;
    const std::uint8_t zero[4] = {};
    return file.Write(audio.data(), static_cast<std::uint32_t>(audio.size())) == audio.size() && file.SeekTo(4) &&
           file.Write(zero, 4) == 4;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-samples FOLDER\n");
        return 2;
    }
    const std::string folder = argv[1];
    const std::string sound = Riff(Format(1, 2, 44100, 16) + ChunkBytes("data", ToneFrames(44100, 2, false)));
    const std::string floating = Riff(Format(3, 2, 48000, 32) + ChunkBytes("data", ToneFrames(48000, 2, true)));
    // A copy broken off inside the format chunk: its sizes promise the whole
    // take, its bytes stop 10 bytes into the format.
    const std::string truncated = sound.substr(0, 30);

    bool ok = WriteFile(folder, "sound-16bit-stereo.wav", sound) && WriteFile(folder, "float-32bit-stereo.wav", floating) &&
              WriteFile(folder, "truncated.wav", truncated) &&
              WriteUnfinished(folder, "unfinished-16bit-stereo.wav", ToneFrames(44100, 2, false));
    return ok ? 0 : 1;
}
