#include "SharedCore/Support/TimeText/StringRegexMatching.h"

#include "Platform/Text/RegularExpression.h"
#include "Platform/Text/TextLength.h"

namespace kestrona {
namespace {

std::optional<RegularExpression> compile(std::string_view pattern) {
  try {
    return RegularExpression::make(pattern);
  } catch (const RegularExpressionError&) {
    return std::nullopt;
  }
}

}  // namespace

std::optional<bool> matchesRegex(std::string_view text, std::string_view pattern) {
  auto expression = compile(pattern);
  if (!expression) return std::nullopt;
  return expression->firstMatch(text, Utf16Range{0, utf16Length(text)}).has_value();
}

std::optional<std::vector<std::string>> matchesForRegex(std::string_view text, std::string_view pattern) {
  auto expression = compile(pattern);
  if (!expression) return std::nullopt;
  std::vector<std::string> texts;
  for (const auto& match : expression->matches(text, Utf16Range{0, characterCount(text)})) {
    texts.push_back(match.text());
  }
  return texts;
}

}  // namespace kestrona
