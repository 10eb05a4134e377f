#pragma once

#include "wave/BodyBytes.h"

#include <cstdint>
#include <optional>
#include <string>

// The text of a metadata field (INFO, bext, cart, labels) decoded by one
// fixed rule, the same on every machine: a CSET chunk's code page when the
// file has one; else UTF-8 when the bytes are valid UTF-8 with a multibyte
// sequence; else code page 932 when they are valid there with a double-byte
// pair; else Latin-1. Bytes that fit none are kept, escaped.

enum class TextEncoding { Ascii, Utf8, Cp932, Latin1, Escaped };

struct MetadataText {
    std::u16string text;  // decoded, or the bytes escaped ("\x81")
    TextEncoding encoding = TextEncoding::Ascii;
    // The CSET's code page, when one was given; then the text is decoded
    // by it alone.
    std::optional<std::uint16_t> codePage;
    // A code page the decoder doesn't read: the bytes are escaped, and
    // that is no fault of the text.
    bool codePageUnread = false;
};

// bytes, without the zero bytes that end it, decoded by the rule.
MetadataText DecodeMetadataText(BodySpan bytes, std::optional<std::uint16_t> codePage);
// "UTF-8", "CP932 by CSET 932", "code page 1251, not decoded", "none".
std::string EncodingName(const MetadataText& text);
// The text that fits no encoding, whose bytes are escaped.
bool IsUndecodable(const MetadataText& text);

// Strict decodings; nothing when bytes is not valid. hasWide is set when a
// multibyte sequence or a double-byte pair was met.
std::optional<std::u16string> DecodeUtf8Strict(BodySpan bytes, bool& hasWide);
std::optional<std::u16string> DecodeCp932(BodySpan bytes, bool& hasWide);
