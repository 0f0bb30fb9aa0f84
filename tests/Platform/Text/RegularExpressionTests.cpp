#include "Platform/Text/RegularExpression.h"

#include <gtest/gtest.h>

#include <thread>

#include "Platform/Text/TextLength.h"

namespace kestrona {
namespace {

std::vector<std::string> texts(const std::vector<RegularExpressionMatch>& matches) {
  std::vector<std::string> result;
  for (const auto& match : matches) result.push_back(match.text());
  return result;
}

Utf16Range whole(std::string_view text) { return Utf16Range{0, utf16Length(text)}; }

TEST(RegularExpression, InvalidPatternsAreTypedErrors) {
  try {
    RegularExpression::make("(\\d+");
    FAIL() << "an unclosed group compiled";
  } catch (const RegularExpressionError& error) {
    EXPECT_EQ(error.kind(), RegularExpressionErrorCode::invalidPattern);
    EXPECT_TRUE(error.is("RegularExpressionError", 0));
    ASSERT_NE(error.userInfoValue<std::string>("pattern"), nullptr);
    EXPECT_EQ(*error.userInfoValue<std::string>("pattern"), "(\\d+");
    EXPECT_NE(error.userInfoValue<std::string>("reason"), nullptr);
  }
  EXPECT_THROW(RegularExpression::make("[a-"), RegularExpressionError);
  EXPECT_THROW(RegularExpression::make("*"), RegularExpressionError);
  EXPECT_NO_THROW(RegularExpression::make(""));
}

TEST(RegularExpression, FindsMatchesInOrderWithTheirGroups) {
  auto expression = RegularExpression::make("(\\d+)h(\\d+)?");
  std::string text = "1h30 and 2h";
  auto all = expression.matches(text, whole(text));
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].text(), "1h30");
  EXPECT_EQ(all[0].range(), (Utf16Range{0, 4}));
  EXPECT_EQ(all[0].texts[1], "1");
  EXPECT_EQ(all[0].texts[2], "30");
  EXPECT_EQ(all[1].text(), "2h");
  EXPECT_EQ(all[1].ranges[1], (Utf16Range{9, 1}));
  // A group that took no part has neither range nor text.
  EXPECT_EQ(all[1].ranges[2], std::nullopt);
  EXPECT_EQ(all[1].texts[2], std::nullopt);
  EXPECT_EQ(expression.firstMatch(text, whole(text))->text(), "1h30");
  EXPECT_EQ(expression.firstMatch("none here", whole("none here")), std::nullopt);
}

TEST(RegularExpression, EmptyMatchesAdvanceAndDoNotRepeat) {
  auto expression = RegularExpression::make("a*");
  std::string text = "baab";
  EXPECT_EQ(texts(expression.matches(text, whole(text))), (std::vector<std::string>{"", "aa", "", ""}));
}

TEST(RegularExpression, OffsetsCountUtf16UnitsOfTheUtf8Text) {
  auto digits = RegularExpression::make("\\d+");
  std::string text = "😀12é34";  // U+1F600 is two units, "é" one
  auto all = digits.matches(text, whole(text));
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].range(), (Utf16Range{2, 2}));
  EXPECT_EQ(all[1].range(), (Utf16Range{5, 2}));
  EXPECT_EQ(all[1].text(), "34");
}

TEST(RegularExpression, SearchStaysInsideTheRange) {
  auto digits = RegularExpression::make("\\d+");
  std::string text = "12 345 6789";
  EXPECT_EQ(texts(digits.matches(text, Utf16Range{1, 5})), (std::vector<std::string>{"2", "345"}));
  EXPECT_EQ(texts(digits.matches(text, Utf16Range{4, 5})), (std::vector<std::string>{"45", "67"}));
  EXPECT_TRUE(digits.matches(text, Utf16Range{2, 1}).empty());
  // The bounds of the range are the anchors.
  auto anchored = RegularExpression::make("^\\d+$");
  EXPECT_EQ(anchored.firstMatch(text, Utf16Range{3, 3})->text(), "345");
  // A range cut inside a surrogate pair sees only the half.
  std::string emoji = "😀1";
  EXPECT_TRUE(digits.matches(emoji, Utf16Range{0, 2}).empty());
}

TEST(RegularExpression, OptionsChangeMatching) {
  std::string text = "Ab\nab";
  EXPECT_EQ(RegularExpression::make("ab").matches(text, whole(text)).size(), 1u);
  EXPECT_EQ(RegularExpression::make("ab", {.caseInsensitive = true}).matches(text, whole(text)).size(), 2u);
  EXPECT_FALSE(RegularExpression::make("b.a").firstMatch(text, whole(text)).has_value());
  EXPECT_TRUE(RegularExpression::make("b.a", {.dotMatchesLineSeparators = true}).firstMatch(text, whole(text)));
  EXPECT_FALSE(RegularExpression::make("^ab$").firstMatch(text, whole(text)).has_value());
  EXPECT_TRUE(RegularExpression::make("^ab$", {.anchorsMatchLines = true}).firstMatch(text, whole(text)));
}

TEST(RegularExpression, OneCompiledExpressionServesManyThreads) {
  auto digits = RegularExpression::make("(\\d+):(\\d+)");
  std::vector<std::thread> threads;
  std::vector<int> found(4, 0);
  for (std::size_t t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 200; ++i) {
        std::string text = std::to_string(i) + ":" + std::to_string(t) + " x " + std::to_string(t) + ":1";
        found[t] += static_cast<int>(digits.matches(text, whole(text)).size());
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(found, std::vector<int>(4, 400));
}

TEST(RegularExpressionDeathTest, ARangeOutsideTheTextStopsTheProcess) {
  auto digits = RegularExpression::make("\\d");
  EXPECT_DEATH(digits.matches("😀", Utf16Range{0, 3}), "the search range lies outside the text");
  EXPECT_DEATH(digits.firstMatch("abc", Utf16Range{4, 0}), "the search range lies outside the text");
}

TEST(TextLength, CharactersAreGraphemeClustersAndUnitsAreUtf16) {
  EXPECT_EQ(characterCount(""), 0u);
  EXPECT_EQ(characterCount("abc"), 3u);
  EXPECT_EQ(characterCount("e\u0301"), 1u);          // e and a combining acute
  EXPECT_EQ(utf16Length("e\u0301"), 2u);
  EXPECT_EQ(characterCount("😀"), 1u);
  EXPECT_EQ(utf16Length("😀"), 2u);
  EXPECT_EQ(characterCount("🇩🇪"), 1u);              // two regional indicators
  EXPECT_EQ(utf16Length("🇩🇪"), 4u);
  EXPECT_EQ(characterCount("a\r\nb"), 3u);           // CR LF is one character
  // Bad UTF-8: one replacement character per bad sequence.
  EXPECT_EQ(characterCount("a\xff" "b"), 3u);
  EXPECT_EQ(utf16Length("a\xff" "b"), 3u);
}

}  // namespace
}  // namespace kestrona
