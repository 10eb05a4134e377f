#pragma once

#include "support/TempDir.h"
#include "wave/RootChunk.h"
#include "wave/WaveDocument.h"

#include <gtest/gtest.h>

#include <string>

// A document opened on a file of the given bytes; the file lives as long as
// the fixture's folder.
class WaveFixture : public testing::Test {
protected:
    bool OpenBytes(const std::string& bytes) { return document.Open(dir.Write("test.wav", bytes)); }

    const Chunk& TopLevel(std::size_t index) const { return *document.GetChunks().At(index); }
    const RootChunk* Root(std::size_t index = 0) const
    {
        return dynamic_cast<const RootChunk*>(document.GetChunks().At(index).get());
    }

    TempDir dir;
    WaveDocument document;
};
