#include "Platform/Text/RegularExpression.h"

#include <unicode/regex.h>
#include <unicode/utypes.h>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {

// A compiled ICU pattern is immutable; each search makes its own matcher.
struct RegularExpression::Compiled {
  std::unique_ptr<icu::RegexPattern> pattern;
};

namespace {

icu::UnicodeString unicode(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::string utf8(const icu::UnicodeString& text) {
  std::string result;
  text.toUTF8String(result);
  return result;
}

RegularExpressionMatch matchOf(const icu::RegexMatcher& matcher, const icu::UnicodeString& text) {
  RegularExpressionMatch match;
  const int32_t groups = matcher.groupCount();
  for (int32_t group = 0; group <= groups; ++group) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t start = matcher.start(group, status);
    int32_t end = matcher.end(group, status);
    if (U_FAILURE(status) || start < 0) {
      match.ranges.emplace_back();
      match.texts.emplace_back();
      continue;
    }
    match.ranges.push_back(
        Utf16Range{static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)});
    match.texts.push_back(utf8(text.tempSubStringBetween(start, end)));
  }
  return match;
}

}  // namespace

RegularExpressionError::RegularExpressionError(RegularExpressionErrorCode code, std::string description,
                                               ErrorUserInfo userInfo)
    : CodedError(std::string(kDomain), code, std::move(description), std::move(userInfo)) {}

RegularExpression RegularExpression::make(std::string_view pattern, Options options) {
  uint32_t flags = 0;
  if (options.caseInsensitive) flags |= UREGEX_CASE_INSENSITIVE;
  if (options.dotMatchesLineSeparators) flags |= UREGEX_DOTALL;
  if (options.anchorsMatchLines) flags |= UREGEX_MULTILINE;
  UParseError parseError{};
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::RegexPattern> compiled(
      icu::RegexPattern::compile(unicode(pattern), flags, parseError, status));
  if (U_FAILURE(status) || !compiled) {
    ErrorUserInfo userInfo{{"pattern", std::string(pattern)}, {"reason", std::string(u_errorName(status))}};
    if (parseError.offset >= 0) userInfo.emplace("offset", static_cast<std::int64_t>(parseError.offset));
    throw RegularExpressionError(RegularExpressionErrorCode::invalidPattern,
                                 "The pattern \"" + std::string(pattern) + "\" is not a valid regular expression.",
                                 std::move(userInfo));
  }
  auto shared = std::make_shared<Compiled>();
  shared->pattern = std::move(compiled);
  return RegularExpression(std::string(pattern), std::move(shared));
}

template <typename Visitor>
void RegularExpression::search(std::string_view text, Utf16Range range, Visitor&& visit) const {
  const icu::UnicodeString unicodeText = unicode(text);
  const auto length = static_cast<std::size_t>(unicodeText.length());
  precondition(range.location <= length && range.length <= length - range.location,
               "RegularExpression: the search range lies outside the text");
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::RegexMatcher> matcher(compiled_->pattern->matcher(unicodeText, status));
  if (U_FAILURE(status)) return;
  matcher->region(static_cast<int64_t>(range.location), static_cast<int64_t>(range.end()), status);
  if (U_FAILURE(status)) return;
  // find() without a start index continues after the previous match and
  // stays inside the region; find(start) would reset the region.
  while (matcher->find(status) && U_SUCCESS(status)) {
    if (!visit(matchOf(*matcher, unicodeText))) return;
  }
}

std::optional<RegularExpressionMatch> RegularExpression::firstMatch(std::string_view text, Utf16Range range) const {
  std::optional<RegularExpressionMatch> first;
  search(text, range, [&](RegularExpressionMatch match) {
    first = std::move(match);
    return false;
  });
  return first;
}

std::vector<RegularExpressionMatch> RegularExpression::matches(std::string_view text, Utf16Range range) const {
  std::vector<RegularExpressionMatch> all;
  search(text, range, [&](RegularExpressionMatch match) {
    all.push_back(std::move(match));
    return true;
  });
  return all;
}

}  // namespace kestrona
