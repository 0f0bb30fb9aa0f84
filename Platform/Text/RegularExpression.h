// Regular expressions in ICU's syntax over UTF-8 text.
//
// A RegularExpression is compiled once by make(), which throws a
// RegularExpressionError when the pattern is not valid, and may then search
// any number of texts from any number of threads at once.
//
// Units. The text is UTF-8, but every offset and length here, in the search
// range and in the results, counts UTF-16 code units of that text, as the
// platform's string ranges do: "a😀b" is four units long and "b" is at 3.
// TextLength.h gives the length of a text in these units and in characters.
// The search range must lie within the text (a programming error stops the
// process otherwise). Matches are searched only inside the range: "^" and
// "$" match at its bounds and nothing outside it is seen.
// Text that is not valid UTF-8 is searched with U+FFFD in place of each bad
// sequence.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/Error.h"

namespace kestrona {

// A span of UTF-16 code units.
struct Utf16Range {
  std::size_t location = 0;
  std::size_t length = 0;

  std::size_t end() const noexcept { return location + length; }
  friend bool operator==(const Utf16Range&, const Utf16Range&) = default;
};

enum class RegularExpressionErrorCode { invalidPattern };

// Domain "RegularExpressionError". User info: "pattern" (the text given),
// "offset" (UTF-16 offset in the pattern where ICU stopped, when known) and
// "reason" (ICU's name of the failure).
class RegularExpressionError final : public CodedError<RegularExpressionErrorCode> {
 public:
  static constexpr std::string_view kDomain = "RegularExpressionError";
  RegularExpressionError(RegularExpressionErrorCode code, std::string description, ErrorUserInfo userInfo);
};

// One match: index 0 is the whole match, 1... the capture groups in order.
// A group that took no part in the match has neither range nor text.
struct RegularExpressionMatch {
  std::vector<std::optional<Utf16Range>> ranges;
  std::vector<std::optional<std::string>> texts;

  Utf16Range range() const { return *ranges.front(); }
  const std::string& text() const { return *texts.front(); }
};

class RegularExpression {
 public:
  struct Options {
    bool caseInsensitive = false;
    // "." matches line ends too.
    bool dotMatchesLineSeparators = false;
    // "^" and "$" match at the start and end of every line.
    bool anchorsMatchLines = false;
  };

  static RegularExpression make(std::string_view pattern, Options options);
  static RegularExpression make(std::string_view pattern) { return make(pattern, Options{}); }

  const std::string& pattern() const noexcept { return pattern_; }

  std::optional<RegularExpressionMatch> firstMatch(std::string_view text, Utf16Range range) const;
  // All matches that do not overlap, from the start of the range on.
  std::vector<RegularExpressionMatch> matches(std::string_view text, Utf16Range range) const;

 private:
  struct Compiled;
  RegularExpression(std::string pattern, std::shared_ptr<const Compiled> compiled)
      : pattern_(std::move(pattern)), compiled_(std::move(compiled)) {}
  template <typename Visitor>
  void search(std::string_view text, Utf16Range range, Visitor&& visit) const;

  std::string pattern_;
  std::shared_ptr<const Compiled> compiled_;
};

}  // namespace kestrona
