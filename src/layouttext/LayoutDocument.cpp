#include "layouttext/LayoutDocument.h"

#include "base/ContainerError.h"
#include "files/ByteBlock.h"
#include "files/FileStream.h"
#include "platform/File.h"
#include "platform/TextCodec.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr std::uint32_t kReadPieceSize = 2048;

} // namespace

// Reads the whole file at path, converts its bytes in one step from the
// thread's character set, and parses the text. False, with the document
// unchanged, for an empty path or a file that can't be opened; false, with
// the document cleared, for an empty file. A file of more than 4 GiB ends
// with a size-overflow error, and one that doesn't fit in memory with an
// out-of-memory error. The file is closed on every way out.
bool LayoutDocument::Load(const WideString& newPath)
{
    if (newPath.IsEmpty())
        return false;
    FileStream stream;
    if (!stream.OpenPlain(newPath, platform::kFileAttributeNormal))
        return false;
    ByteBlock bytes;
    std::uint8_t piece[kReadPieceSize];
    for (std::uint32_t got; (got = stream.Read(piece, kReadPieceSize)) != 0;) {
        std::uint32_t size = bytes.Size();
        if (got > std::numeric_limits<std::uint32_t>::max() - size)
            ThrowContainerError(kResultSizeOverflow);
        if (!bytes.Resize(size + got))
            ThrowContainerError(kResultOutOfMemory);
        std::memcpy(bytes.Data() + size, piece, got);
    }
    // No byte order mark is looked for: such bytes are converted like all
    // others and end up in front of the first line.
    WideString text(platform::ThreadBytesToWide(reinterpret_cast<const char*>(bytes.Data()), bytes.Size()));
    if (!Parse(text))
        return false;
    path = newPath;
    return true;
}

// Replaces the document by the sections of text. Lines end only at CR LF; a
// lone CR or LF is a character of its line, and empty lines are dropped.
// Nothing is trimmed. False, with the document cleared, for an empty text;
// otherwise true, whatever the lines hold.
bool LayoutDocument::Parse(const WideString& text)
{
    sections.ClearFromBack();
    path.Clear();
    if (text.IsEmpty())
        return false;
    std::u16string_view view = text.View();
    for (std::size_t start = 0; start < view.size();) {
        std::size_t end = std::min(view.find(u"\r\n", start), view.size());
        if (end > start)
            ParseLine(view.substr(start, end - start));
        start = end + 2;
    }
    for (std::unique_ptr<LayoutSection>& section : sections)
        section->attributes.Rehash();
    return true;
}

// The name of section index, or a shared empty text when there is none.
const WideString& LayoutDocument::GetSectionName(std::int32_t index) const
{
    static const WideString emptyName;
    const LayoutSection* section = SectionAt(index);
    return section ? section->name : emptyName;
}

// The map of section index, or a shared empty map when there is none.
const AttributeMap& LayoutDocument::GetSectionMap(std::int32_t index) const
{
    static const AttributeMap emptyMap;
    const LayoutSection* section = SectionAt(index);
    return section ? section->attributes : emptyMap;
}

// Destroys the first section; the others move up one place. False when the
// document has no section.
bool LayoutDocument::RemoveFirstSection()
{
    if (sections.IsEmpty())
        return false;
    sections.RemoveAt(0);
    return true;
}

// One non-empty line, by the first test that fits: a comment, a section
// header, an entry. The header test comes before the entry test, so "[a=b]"
// is a section. Entries before the first header have no section to go to and
// are dropped, and a line without '=' changes nothing.
void LayoutDocument::ParseLine(std::u16string_view line)
{
    if (line.front() == u';' || line.starts_with(u"//"))
        return;
    if (line.size() >= 3 && line.front() == u'[' && line.back() == u']') {
        auto section = std::make_unique<LayoutSection>();
        section->name = WideString(line.substr(1, line.size() - 2));
        sections.Add(std::move(section));
        return;
    }
    std::size_t equals = line.find(u'=');
    if (equals == std::u16string_view::npos || sections.IsEmpty())
        return;
    // Only the first '=' splits. One in front makes the empty key with an
    // empty value, and what stands behind it is lost.
    WideString key(line.substr(0, equals));
    WideString value = equals == 0 ? WideString() : WideString(line.substr(equals + 1));
    sections.At(sections.Count() - 1)->attributes.Set(key, value);
}

const LayoutSection* LayoutDocument::SectionAt(std::int32_t index) const
{
    if (index < 0 || static_cast<std::size_t>(index) >= sections.Count())
        return nullptr;
    return sections.At(static_cast<std::size_t>(index)).get();
}
