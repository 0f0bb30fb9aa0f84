#include "SharedCore/Support/Colors/ColorHexParsing.h"

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "Platform/Text/TextLength.h"
#include "Platform/Text/WhitespaceTrimming.h"

namespace kestrona {

namespace {

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
  const std::uint64_t number = scanHexInt64(trimmingWhitespacesAndNewlines(hexString)).value_or(0);
  return componentsOf(number, characterCount(hexString));
}

Color colorFromHexString(std::string_view hexString) {
  const std::string_view trimmed = trimmingWhitespacesAndNewlines(hexString);
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
