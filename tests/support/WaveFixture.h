#pragma once

#include "support/TempDir.h"
#include "wave/DataChunk.h"
#include "wave/FormatChunk.h"
#include "wave/InfoChunk.h"
#include "wave/RootChunk.h"
#include "wave/WaveDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

// A document opened on a file of the given bytes; the file lives as long as
// the fixture's folder.
class WaveFixture : public testing::Test {
protected:
    bool OpenBytes(const std::string& bytes) { return document.Open(dir.Write("test.wav", bytes)); }

    // What a fresh document reads of these bytes, in one line: the result of
    // Open, the container kind, the tree of chunks as "id:size{children}"
    // (a root with its form type, an INFO list with its entries, other than
    // printable ASCII shown as '.'), and the format and data slots.
    std::string Describe(const std::string& bytes) const
    {
        WaveDocument fresh;
        const bool opened = fresh.Open(dir.Write("described.wav", bytes));
        return Describe(fresh, opened);
    }
    // What a fresh document of the given tree form makes of these bytes for
    // its users: the line of Describe without the tree.
    std::string DescribeRegistry(const std::string& bytes, TreeForm form) const
    {
        WaveDocument fresh;
        fresh.SetTreeForm(form);
        const bool opened = fresh.Open(dir.Write("described.wav", bytes));
        return Describe(fresh, opened, false);
    }
    static std::string Describe(const WaveDocument& read, bool opened, bool withTree = true)
    {
        std::string text = opened ? "ok " : "failed ";
        text += read.GetContainerKind() == kContainerRiff ? "riff" : "unknown";
        for (const auto& chunk : read.GetChunks())
            text += withTree ? " " + Tree(*chunk) : "";
        if (const FormatChunk* format = read.GetFormatChunk()) {
            const WaveFormat f = format->GetFormat();
            text += " fmt=" + std::to_string(f.formatTag) + "/" + std::to_string(f.channels) + "/" +
                    std::to_string(f.samplesPerSec) + "/" + std::to_string(f.bitsPerSample) + "/" +
                    std::to_string(f.blockAlign) + "/" + std::to_string(f.extraSize);
        }
        if (const DataChunk* data = read.GetDataChunk())
            text += " data=" + std::to_string(data->GetSize()) + "/" + std::to_string(data->GetFrameCount());
        return text;
    }

    static std::string Id(std::uint32_t id)
    {
        std::string text;
        for (int shift = 0; shift < 32; shift += 8) {
            const char c = static_cast<char>((id >> shift) & 0xFF);
            text += c == ' ' ? '_' : (c > ' ' && c < 0x7F ? c : '.');
        }
        return text;
    }
    static std::string Tree(const Chunk& chunk)
    {
        std::string text = Id(chunk.GetId());
        if (const auto* root = dynamic_cast<const RootChunk*>(&chunk))
            text += "/" + Id(root->GetFormType());
        text += ":" + std::to_string(chunk.GetSize());
        if (const auto* info = dynamic_cast<const InfoChunk*>(&chunk)) {
            std::vector<std::string> entries;
            WideString key, value;
            for (std::int32_t i = 0; info->GetEntries().GetEntry(i, key, value); ++i) {
                std::string entry(key.View().begin(), key.View().end());
                entry += "=";
                for (char16_t unit : value.View())
                    entry += unit >= u' ' && unit < 0x7F ? static_cast<char>(unit) : '.';
                entries.push_back(entry);
            }
            std::sort(entries.begin(), entries.end());
            for (const std::string& entry : entries)
                text += " " + entry;
        }
        if (!chunk.GetChildren().IsEmpty()) {
            text += "{";
            for (std::size_t i = 0; i < chunk.GetChildren().Count(); ++i)
                text += (i ? " " : "") + Tree(*chunk.GetChildren().At(i));
            text += "}";
        }
        return text;
    }

    const RootChunk* Root(std::size_t index = 0) const
    {
        return dynamic_cast<const RootChunk*>(document.GetChunks().At(index).get());
    }

    TempDir dir;
    WaveDocument document;
};
