// Regular-expression questions asked of a text, with no options.
//
// matchesRegex() is none when the pattern does not compile, and otherwise
// whether it matches anywhere in the whole text.
//
// matchesForRegex() is none when the pattern does not compile, and otherwise
// the text of every match in order. Its search range is kept as the system
// has always had it: it starts at 0 and is as many UTF-16 units long as the
// text has characters (grapheme clusters). In a text with characters of
// two or more units the end of the text is therefore not searched: in
// "😀 12 34" (7 characters, 8 units) "34" is cut to "3".
//
// The pattern is compiled on every call. Thread-safe.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrona {

std::optional<bool> matchesRegex(std::string_view text, std::string_view pattern);
std::optional<std::vector<std::string>> matchesForRegex(std::string_view text, std::string_view pattern);

}  // namespace kestrona
