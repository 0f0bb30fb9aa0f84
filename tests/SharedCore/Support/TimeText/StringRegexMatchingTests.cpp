#include "SharedCore/Support/TimeText/StringRegexMatching.h"

#include <gtest/gtest.h>

namespace kestrona {
namespace {

using Texts = std::vector<std::string>;

TEST(MatchesRegex, AnywhereInTheWholeTextOrNoneForABadPattern) {
  EXPECT_EQ(matchesRegex("abc", "b"), true);
  EXPECT_EQ(matchesRegex("abc", "^b"), false);
  EXPECT_EQ(matchesRegex("abc", "("), std::nullopt);
  // The whole text is searched, even past characters of two units.
  EXPECT_EQ(matchesRegex("😀😀1", "\\d"), true);
  EXPECT_EQ(matchesRegex("", ""), true);
}

TEST(MatchesForRegex, AllMatchesInOrder) {
  EXPECT_EQ(matchesForRegex("1h 30m 15s", "\\d+"), (Texts{"1", "30", "15"}));
  EXPECT_EQ(matchesForRegex("1.5h", "(\\d*)(.*)(\\d+)"), (Texts{"1.5"}));
  EXPECT_EQ(matchesForRegex("no digits", "\\d+"), (Texts{}));
  EXPECT_EQ(matchesForRegex("abc", "[a-"), std::nullopt);
}

TEST(MatchesForRegex, TheRangeIsAsLongAsTheTextHasCharactersCountedInUtf16Units) {
  // 7 characters in 8 units: the last unit, "4", is not searched.
  EXPECT_EQ(matchesForRegex("😀 12 34", "\\d+"), (Texts{"12", "3"}));
  // A flag is one character of four units: 3 units cover only the flag.
  EXPECT_EQ(matchesForRegex("🇩🇪12", "\\d+"), Texts{});
  // A decomposed "é" is one character of two units.
  EXPECT_EQ(matchesForRegex("e\u0301 12", "\\d+"), (Texts{"1"}));
  // Characters of one unit each: the whole text.
  EXPECT_EQ(matchesForRegex("é 12", "\\d+"), (Texts{"12"}));
}

}  // namespace
}  // namespace kestrona
