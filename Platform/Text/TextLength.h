// Lengths of UTF-8 text in the units other parts count in.
//
// characterCount() counts user-perceived characters (extended grapheme
// clusters): "é" written as "e" and a combining accent is one character, and
// so is a flag made of two regional indicators. utf16Length() counts UTF-16
// code units, the unit of every offset in RegularExpression: a character
// outside the Basic Multilingual Plane ("😀") is two. Invalid UTF-8 counts
// as one U+FFFD per bad sequence. Pure functions, thread-safe.
#pragma once

#include <cstddef>
#include <string_view>

namespace kestrona {

std::size_t characterCount(std::string_view text);
std::size_t utf16Length(std::string_view text);

}  // namespace kestrona
