#include "SharedCore/Support/Colors/ColorHexParsing.h"

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "Platform/Text/TextLength.h"

namespace kestrona {

namespace {

// White space and newlines as Unicode defines them: the separators (Zs, Zl,
// Zp), the tab and line-break controls and NEXT LINE.
bool isWhitespaceOrNewline(char32_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000;
}

bool isContinuationByte(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// The code point of the well-formed UTF-8 sequence text, or none.
std::optional<char32_t> codePoint(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return text.size() == 1 ? std::optional<char32_t>(lead) : std::nullopt;
  std::size_t length = 0;
  char32_t value = 0;
  if ((lead & 0xE0) == 0xC0) {
    length = 2;
    value = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3;
    value = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4;
    value = lead & 0x07;
  } else {
    return std::nullopt;
  }
  if (text.size() != length) return std::nullopt;
  for (std::size_t index = 1; index < length; ++index) {
    if (!isContinuationByte(text[index])) return std::nullopt;
    value = (value << 6) | (static_cast<unsigned char>(text[index]) & 0x3F);
  }
  // An overlong form (a space written in two bytes) is not a character.
  static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (value < kSmallest[length]) return std::nullopt;
  return value;
}

// The length of the UTF-8 sequence that starts text (1 for a stray byte).
std::size_t firstSequenceLength(std::string_view text) {
  std::size_t length = 1;
  while (length < text.size() && length < 4 && isContinuationByte(text[length])) ++length;
  return length;
}

// The length of the UTF-8 sequence that ends text (1 for a stray byte).
std::size_t lastSequenceLength(std::string_view text) {
  std::size_t length = 1;
  while (length < text.size() && length < 4 && isContinuationByte(text[text.size() - length])) ++length;
  return length;
}

bool isWhitespaceOrNewline(std::string_view sequence) {
  const std::optional<char32_t> c = codePoint(sequence);
  return c.has_value() && isWhitespaceOrNewline(*c);
}

std::string_view stripped(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = firstSequenceLength(text);
    if (!isWhitespaceOrNewline(text.substr(0, length))) break;
    text.remove_prefix(length);
  }
  while (!text.empty()) {
    const std::size_t length = lastSequenceLength(text);
    if (!isWhitespaceOrNewline(text.substr(text.size() - length))) break;
    text.remove_suffix(length);
  }
  return text;
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Scans a hexadecimal integer at the start of text after any "#", with an
// optional "0x" or "0X" prefix; trailing characters are ignored. None when
// no digit follows. A number too large for 64 bits reads as the largest one.
std::optional<std::uint64_t> scanHexInt64(std::string_view text) {
  while (!text.empty() && text.front() == '#') text.remove_prefix(1);
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && hexDigit(text[2]) >= 0) {
    text.remove_prefix(2);
  }
  if (text.empty() || hexDigit(text.front()) < 0) return std::nullopt;
  std::uint64_t number = 0;
  bool overflowed = false;
  for (char c : text) {
    const int digit = hexDigit(c);
    if (digit < 0) break;
    if (number > (std::numeric_limits<std::uint64_t>::max() >> 4)) overflowed = true;
    number = (number << 4) | static_cast<std::uint64_t>(digit);
  }
  return overflowed ? std::numeric_limits<std::uint64_t>::max() : number;
}

double byteComponent(std::uint64_t number, int shift) {
  return static_cast<double>((number >> shift) & 0xFF) / 255.0;
}

RGBAComponents componentsOf(std::uint64_t number, std::size_t characters) {
  if (characters < 8) {
    const std::uint64_t clamped = std::min<std::uint64_t>(number, 0xFFFFFF);
    return {byteComponent(clamped, 16), byteComponent(clamped, 8), byteComponent(clamped, 0), 1.0};
  }
  return {byteComponent(number, 24), byteComponent(number, 16), byteComponent(number, 8), byteComponent(number, 0)};
}

}  // namespace

RGBAComponents displayP3HexToRGBA(std::string_view hexString) {
  const std::uint64_t number = scanHexInt64(stripped(hexString)).value_or(0);
  return componentsOf(number, characterCount(hexString));
}

Color colorFromHexString(std::string_view hexString) {
  const std::string_view trimmed = stripped(hexString);
  const std::optional<std::uint64_t> number = scanHexInt64(trimmed);
  if (!number) return Color::rgb(0, 0, 0, 1);
  const RGBAComponents components = componentsOf(*number, characterCount(trimmed));
  return Color::rgb(components.red, components.green, components.blue, components.alpha);
}

Color dynamicDisplayP3Color(std::string lightHexString, std::string darkHexString) {
  std::string name = lightHexString + darkHexString;
  const RGBAComponents light = displayP3HexToRGBA(lightHexString);
  const RGBAComponents dark = displayP3HexToRGBA(darkHexString);
  return Color::dynamic(std::move(name), [light, dark](const Appearance& appearance) {
    static constexpr std::array<Appearance::Name, 2> kDarkThenLight{Appearance::Name::dark, Appearance::Name::light};
    const RGBAComponents& chosen = appearance.bestMatch(kDarkThenLight) == Appearance::Name::dark ? dark : light;
    return Color::displayP3(chosen.red, chosen.green, chosen.blue, chosen.alpha);
  });
}

}  // namespace kestrona
