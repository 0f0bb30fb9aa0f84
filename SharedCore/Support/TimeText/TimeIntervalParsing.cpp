#include "SharedCore/Support/TimeText/TimeIntervalParsing.h"

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <clocale>
#include <cstdlib>
#include <locale.h>
#include <string>
#include <vector>

#include "Platform/Time/DateFormatter.h"
#include "SharedCore/Support/TimeText/StringRegexMatching.h"

namespace kestrona {
namespace {

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

std::string normalise(std::string_view raw) {
  icu::UnicodeString text =
      icu::UnicodeString::fromUTF8(icu::StringPiece(raw.data(), static_cast<int32_t>(raw.size())));
  int32_t start = 0;
  int32_t end = text.length();
  while (start < end && u_isUWhiteSpace(text.char32At(start))) start = text.moveIndex32(start, 1);
  while (end > start) {
    int32_t previous = text.moveIndex32(end, -1);
    if (!u_isUWhiteSpace(text.char32At(previous))) break;
    end = previous;
  }
  text = icu::UnicodeString(text, start, end - start);
  text.toLower(icu::Locale::getRoot());
  std::string result;
  text.toUTF8String(result);
  std::erase(result, ' ');
  replaceAll(result, ",", ".");
  replaceAll(result, "min", "m");
  replaceAll(result, "sec", "s");
  return result;
}

// strtod in the C locale over the whole text: none unless every byte is
// used. strtod itself would skip white space in front of the number; here a
// text that begins with white space (or is empty) is no number.
std::optional<double> wholeNumber(const std::string& text) {
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
  if (text.empty() || std::string_view(" \t\n\v\f\r").find(text.front()) != std::string_view::npos) {
    return std::nullopt;
  }
  char* end = nullptr;
  double value = strtod_l(text.c_str(), &end, cLocale);
  if (end != text.c_str() + text.size() || end == text.c_str()) return std::nullopt;
  return value;
}

// Seconds from the reference time to the text, both read with pattern.
// The zone is GMT and the locale en_US_POSIX, so that the answer does not
// depend on where the program runs: a time of day is read as a duration.
std::optional<double> clockTime(const std::string& text, const std::string& pattern, const std::string& reference) {
  DateFormatter formatter;
  formatter.setDateFormat(pattern);
  formatter.setTimeZone(TimeZone::gmt());
  formatter.setLocale(Locale("en_US_POSIX"));
  auto date = formatter.date(text);
  auto zero = formatter.date(reference);
  if (!date || !zero) return std::nullopt;
  return date->timeIntervalSince(*zero);
}

// The numbers among the matches of pattern; empty if it does not compile.
std::vector<double> numbersMatching(const std::string& text, std::string_view pattern) {
  std::vector<double> numbers;
  for (const auto& match : matchesForRegex(text, pattern).value_or(std::vector<std::string>{})) {
    if (auto number = wholeNumber(match)) numbers.push_back(*number);
  }
  return numbers;
}

bool matches(const std::string& text, std::string_view pattern) { return matchesRegex(text, pattern).value_or(false); }

}  // namespace

std::optional<double> toTimeInterval(std::string_view raw) {
  const std::string text = normalise(raw);

  if (auto minutes = wholeNumber(text)) return *minutes * 60;
  if (auto seconds = clockTime(text, "HH:mm:ss", "00:00:00")) return seconds;
  if (auto seconds = clockTime(text, "HH:mm", "00:00")) return seconds;

  if (matches(text, R"((\d+)h(\d+)m(\d+)s)")) {
    auto numbers = numbersMatching(text, R"(\d+)");
    if (numbers.size() == 3) return numbers[0] * 3600 + numbers[1] * 60 + numbers[2];
  }
  if (matches(text, R"((\d+)h(\d+)m)")) {
    auto numbers = numbersMatching(text, R"(\d+)");
    if (numbers.size() == 2) return numbers[0] * 3600 + numbers[1] * 60;
  }
  if (matches(text, R"((\d*)(.*)(\d+)h)")) {
    auto numbers = numbersMatching(text, R"((\d*)(.*)(\d+))");
    if (numbers.size() == 1) return numbers[0] * 3600;
  }
  if (matches(text, R"((\d*)(.*)(\d+)m)")) {
    auto numbers = numbersMatching(text, R"((\d*)(.*)(\d+))");
    if (numbers.size() == 1) return numbers[0] * 60;
  }
  return std::nullopt;
}

}  // namespace kestrona
