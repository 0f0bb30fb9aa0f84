#include "SharedWidgets/Views/Chart/ChartValueFormatting.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

#include "Platform/Foundation/FatalError.h"
#include "Platform/Time/NumberFormatter.h"

namespace kestrona {
namespace {

constexpr std::string_view kNoBreakSpace = "\u00A0";

struct CompactScale {
  double divisor = 1;
  std::string_view suffix;
};

// The divisor and suffix for value; none below 1000.
std::optional<CompactScale> compactScale(double value) {
  if (value >= 1e9) return CompactScale{1e9, "B"};
  if (value >= 1e6) return CompactScale{1e6, "M"};
  if (value >= 1000) return CompactScale{1000, "K"};
  return std::nullopt;
}

// The value's text when no formatter could write it.
std::string decimalText(double value) {
  std::string text = std::to_string(value);
  // std::to_string writes six fraction digits; drop the trailing zeros.
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (!text.empty() && text.back() == '.') text.pop_back();
  }
  return text;
}

void removeAll(std::string& text, std::string_view part) {
  if (part.empty()) return;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at)) {
    text.erase(at, part.size());
  }
}

// The length of the white space (ASCII blanks and tabs, and the Unicode
// space separators ICU puts in currency patterns) that starts text at at.
std::size_t whiteSpaceLength(std::string_view text, std::size_t at) {
  static constexpr std::string_view kSpaces[] = {" ", "\t", "\u00A0", "\u202F", "\u2007", "\u2009", "\u2002", "\u2003"};
  for (std::string_view space : kSpaces) {
    if (text.substr(at, space.size()) == space) return space.size();
  }
  return 0;
}

std::string trimmed(const std::string& text) {
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t length = whiteSpaceLength(text, begin);
    if (length == 0) break;
    begin += length;
  }
  std::size_t end = text.size();
  while (end > begin) {
    bool found = false;
    for (std::size_t length = 1; length <= 3 && length <= end - begin; ++length) {
      if (whiteSpaceLength(text, end - length) == length) {
        end -= length;
        found = true;
        break;
      }
    }
    if (!found) break;
  }
  return text.substr(begin, end - begin);
}

}  // namespace

std::string compactCurrencyString(double value, const Locale& locale, const std::optional<std::string>& currencyCode) {
  NumberFormatter formatter;
  formatter.setNumberStyle(NumberFormatter::Style::currency);
  formatter.setLocale(locale);
  // A code brings its currency's digits with it, so it is set before the
  // fraction digits are limited.
  if (currencyCode) formatter.setCurrencyCode(currencyCode);
  formatter.setMaximumFractionDigits(1);

  const std::string sample = formatter.string(999).value_or("$999");
  std::string symbol = formatter.currencySymbol();
  if (symbol.empty()) symbol = "$";
  const bool prefixed = sample.starts_with(symbol);
  const bool spaced = sample.find(kNoBreakSpace) != std::string::npos;

  const std::optional<CompactScale> scale = compactScale(value);
  if (!scale) return formatter.string(value).value_or(decimalText(value));

  const double shortened = value / scale->divisor;
  std::string number = formatter.string(shortened).value_or(decimalText(shortened));
  removeAll(number, symbol);
  number = trimmed(number);

  const std::string blank = spaced ? " " : "";
  if (prefixed) return symbol + blank + number + std::string(scale->suffix);
  return number + std::string(scale->suffix) + blank + symbol;
}

std::string compactNumberString(double value, const Locale& locale) {
  const double tenths = value * 10;
  // 2^63 is the first double beyond the range of a signed 64-bit integer.
  constexpr double kLimit = 9223372036854775808.0;
  if (!std::isfinite(value) || tenths >= kLimit || tenths < -kLimit) {
    fatalError("A chart value cannot be written in tenths: " + decimalText(value));
  }
  const double truncated = static_cast<double>(static_cast<std::int64_t>(tenths)) / 10;

  NumberFormatter formatter;
  formatter.setMaximumFractionDigits(1);
  formatter.setLocale(locale);

  const std::optional<CompactScale> scale = compactScale(truncated);
  const double shown = scale ? truncated / scale->divisor : truncated;
  const std::string number = formatter.string(shown).value_or(decimalText(shown));
  return scale ? number + std::string(scale->suffix) : number;
}

std::string plainNumberString(double value, const Locale& locale) {
  NumberFormatter formatter;
  formatter.setLocale(locale);
  formatter.setMaximumFractionDigits(0);
  return formatter.string(value).value_or("");
}

}  // namespace kestrona
