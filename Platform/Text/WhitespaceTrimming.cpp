#include "Platform/Text/WhitespaceTrimming.h"

#include <cstddef>
#include <optional>

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

}  // namespace

std::string_view trimmingWhitespacesAndNewlines(std::string_view text) {
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


}  // namespace kestrona
