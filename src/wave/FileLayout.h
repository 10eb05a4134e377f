#pragma once

#include "base/WideString.h"
#include "wave/Rf64File.h"
#include "wave/WaveDocument.h"

#include <cstdint>
#include <string>

class ChunkObserver;

// The container a file is in, as the layout found it.
enum class FileContainer { Neither, Riff, Rf64 };

// How the layout reads a file that begins with the id "RF64", which the
// walk takes for a file that is not RIFF.
enum class Rf64Reading {
    // Walked like any file, and named RF64 when the walk met no RIFF id;
    // its RF64 layout is not read.
    NameOnly,
    // The same, and its RF64 layout read.
    AfterWalk,
    // Its RF64 layout read in place of the walk, whatever ids it holds.
    InPlaceOfWalk,
};

// What a reader of files asks their layouts to read.
struct LayoutReading {
    TreeForm form = TreeForm::SlotsOnly;
    Rf64Reading rf64 = Rf64Reading::NameOnly;
};

// What the file at a path is, read once and handed to every reader of it:
// whether it is a file at all, its size, its container, its chunks walked
// into a document, and an RF64 file's layout. The file is opened once, by
// the document, and stays open for the readers until the layout goes; they
// read it through AcquireStream. A file held in memory is read the same way
// under a name of its own. The document opens no frame streams: the
// readers of a layout ask the data chunk for its frame count only. Made on
// the thread of the reader that uses it.
class FileLayout {
public:
    // observer, when given, is told of every chunk of the walk.
    FileLayout(const WideString& path, const LayoutReading& reading, ChunkObserver* observer = nullptr);
    // The file's bytes, which stay the caller's until the layout goes; name
    // is its path for the readers and their reports.
    FileLayout(const MemoryBytes& bytes, const WideString& name, const LayoutReading& reading,
               ChunkObserver* observer = nullptr);
    FileLayout(const FileLayout&) = delete;
    FileLayout& operator=(const FileLayout&) = delete;

    const WideString& GetPath() const { return path; }
    // A file, not a folder, is at the path.
    bool IsExistingFile() const { return existing; }
    // The file could be opened for reading.
    bool IsOpen() const { return open; }
    // 0 when it can't be opened.
    std::int64_t GetFileSize() const { return fileSize; }
    FileContainer GetContainer() const { return container; }
    // The bytes of a file held in memory; null for a file on disk.
    const MemoryBytes* GetMemory() const { return inMemory ? &memory : nullptr; }

    // The document, walked in the form asked for unless the RF64 layout
    // was read in place of the walk; walkedWell is what the walk gave, as
    // WaveDocument::Open gives it.
    WaveDocument& GetDocument() { return document; }
    const WaveDocument& GetDocument() const { return document; }
    bool IsWalkedWell() const { return walkedWell; }
    FileStream& AcquireStream(StreamGuard& guard) { return document.AcquireStream(guard); }

    // An RF64 file's layout, when one was asked for: read well, or the
    // reason why not in GetRf64Problem.
    bool HasRf64Layout() const { return rf64Read; }
    const Rf64Layout& GetRf64Layout() const { return rf64Layout; }
    const std::string& GetRf64Problem() const { return rf64Problem; }

private:
    void Read(const LayoutReading& reading, ChunkObserver* observer);
    void ReadRf64();

    WideString path;
    MemoryBytes memory;
    bool inMemory = false;
    bool existing = false;
    bool open = false;
    std::int64_t fileSize = 0;
    FileContainer container = FileContainer::Neither;
    WaveDocument document;
    bool walkedWell = false;
    bool rf64Read = false;
    Rf64Layout rf64Layout;
    std::string rf64Problem;
};
