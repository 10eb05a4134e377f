#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Keeps from the TOML reader the characters it can't take, and gives them
// back in what it read. The reader (toml++ 3.3.0) asks of a character
// outside a string's plain text whether it is whitespace, and its table has
// no answer for U+00A1 to U+0499, U+2C5E to U+3117 but U+3000, and U+FB06
// to U+FEFE: it reaches __builtin_unreachable, and anything may follow.
// Behind a broken number, a backslash or in a line the reader has already
// given up, any character may be asked about, so no scan for where it would
// be can be sure; instead each such character is moved to plane 15 (private
// use), U+F0000 above itself, before the reader sees the text. A policy may
// then hold any text in its strings and comments.

// The text with each such character moved. False, with the offset of the
// first, when the text already holds a character where one is moved to:
// moving back would change it.
bool ShieldFromReader(std::string_view text, std::string& shielded, std::size_t& clash);

// A text the reader gave, with every moved character back in its place.
// Bytes that are no UTF-8 stay as they are.
std::string UnshieldText(std::string_view text);
