// Colours from hexadecimal strings.
//
// All hex strings of the palette are Display P3 values of the form
// "#RRGGBB". The parsing is shared by the palette and displayP3HexToRGBA():
//
//   1. White space and newlines (Unicode's, such as U+00A0 and U+3000, not
//      only ASCII's) are stripped from both ends.
//   2. A hexadecimal 64-bit integer is scanned, skipping "#"; a failed scan
//      gives the number 0.
//   3. The characters of the string as passed in are counted, "#" and any
//      white space included. A character is what a reader sees as one (an
//      extended grapheme cluster): a digit with a combining mark is one, and
//      so is a carriage return with its line feed.
//   4. Fewer than 8: the number is 24-bit, clamped to 0xFFFFFF, and alpha
//      is 1. Otherwise it is 32-bit with alpha in the low byte, unclamped.
//   5. Each component is its byte divided by 255.
//
// So "#FF0048" gives (1, 0, 72/255, 1), an unparsable "zzz" gives opaque
// black, and an unparsable "zzzzzzzzz" gives 0 in all four components.
//
// colorFromHexString() differs in three points: it makes a device RGB
// colour, it counts the characters of the stripped string, and a failed
// scan gives opaque black.
//
// All functions are pure and thread-safe.
#pragma once

#include <string>
#include <string_view>

#include "Platform/Color/Color.h"

namespace kestrona {

// The Display P3 components of hexString.
RGBAComponents displayP3HexToRGBA(std::string_view hexString);

// A device RGB colour from hexString.
Color colorFromHexString(std::string_view hexString);

// A dynamic Display P3 colour named lightHexString + darkHexString, which
// resolves to darkHexString in an appearance whose best match among dark
// and light (asked in that order) is dark, and to lightHexString otherwise.
Color dynamicDisplayP3Color(std::string lightHexString, std::string darkHexString);

}  // namespace kestrona
