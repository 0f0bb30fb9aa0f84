#include "SharedCore/Support/Colors/ColorHexParsing.h"

#include <gtest/gtest.h>

namespace kestrona {
namespace {

RGBAComponents bytes(int red, int green, int blue, int alpha) {
  return {red / 255.0, green / 255.0, blue / 255.0, alpha / 255.0};
}

TEST(DisplayP3HexToRGBATest, SevenCharactersAreOpaqueTwentyFourBitColors) {
  EXPECT_EQ(displayP3HexToRGBA("#FF0048"), (RGBAComponents{1, 0, 72 / 255.0, 1}));
  EXPECT_EQ(displayP3HexToRGBA("#bbbbbb"), bytes(0xBB, 0xBB, 0xBB, 255));
  // Fewer digits are a smaller number, not a shorter form.
  EXPECT_EQ(displayP3HexToRGBA("#FFF"), bytes(0, 0x0F, 0xFF, 255));
  // Seven digits without "#" are clamped to white.
  EXPECT_EQ(displayP3HexToRGBA("1FFFFFF"), bytes(255, 255, 255, 255));
}

TEST(DisplayP3HexToRGBATest, EightOrMoreCharactersCarryAlphaInTheLowByte) {
  EXPECT_EQ(displayP3HexToRGBA("#FF004880"), bytes(0xFF, 0x00, 0x48, 0x80));
  // A leading "#" and seven digits already count eight.
  EXPECT_EQ(displayP3HexToRGBA("#FF00481"), bytes(0x0F, 0xF0, 0x04, 0x81));
  // Only the low 32 bits count; a number too large for 64 bits is all ones.
  EXPECT_EQ(displayP3HexToRGBA("#12345678AB"), bytes(0x34, 0x56, 0x78, 0xAB));
  EXPECT_EQ(displayP3HexToRGBA("#FFFFFFFFFFFFFFFFFFFF"), bytes(255, 255, 255, 255));
}

TEST(DisplayP3HexToRGBATest, LengthIsCountedBeforeStripping) {
  // Stripped, this is "#FF0048"; counted as passed in it has eight
  // characters, so 0xFF0048 is read as a 32-bit colour.
  EXPECT_EQ(displayP3HexToRGBA(" #FF0048"), bytes(0x00, 0xFF, 0x00, 0x48));
  EXPECT_EQ(displayP3HexToRGBA("#FF0048\n"), bytes(0x00, 0xFF, 0x00, 0x48));
  // A carriage return and line feed are one character.
  EXPECT_EQ(displayP3HexToRGBA("#FF004\r\n"), bytes(0x0F, 0xF0, 0x04, 255));
}

TEST(DisplayP3HexToRGBATest, UnicodeWhiteSpaceIsStrippedAndCharactersAreWhatAReaderSees) {
  // A no-break space and an ideographic space are white space too; counted
  // as passed in, each makes the string eight characters long.
  EXPECT_EQ(displayP3HexToRGBA("\u00A0#FF0048"), bytes(0x00, 0xFF, 0x00, 0x48));
  EXPECT_EQ(displayP3HexToRGBA("#FF0048\u3000"), bytes(0x00, 0xFF, 0x00, 0x48));
  EXPECT_EQ(displayP3HexToRGBA("\u2028#FF0048"), bytes(0x00, 0xFF, 0x00, 0x48));
  // A digit with a combining mark is one character: seven in all. The scan
  // stops at the mark.
  EXPECT_EQ(displayP3HexToRGBA("#FF0048\u0301"), bytes(0xFF, 0x00, 0x48, 255));
  // A flag of two regional indicators is one character too.
  EXPECT_EQ(displayP3HexToRGBA("#FF004\U0001F1E9\U0001F1EA"), bytes(0x0F, 0xF0, 0x04, 255));
  // A zero-width space is not white space: the scan fails, and the eight
  // characters select the 32-bit form.
  EXPECT_EQ(displayP3HexToRGBA("\u200B#FF0048"), (RGBAComponents{0, 0, 0, 0}));
  // Nor is a space in an overlong two-byte form, which is not UTF-8.
  EXPECT_EQ(displayP3HexToRGBA("\xC0\xA0#FF0048"), (RGBAComponents{0, 0, 0, 0}));
}

TEST(DisplayP3HexToRGBATest, FailedScansReadAsZero) {
  EXPECT_EQ(displayP3HexToRGBA("zzz"), (RGBAComponents{0, 0, 0, 1}));
  EXPECT_EQ(displayP3HexToRGBA("zzzzzzzzz"), (RGBAComponents{0, 0, 0, 0}));
  EXPECT_EQ(displayP3HexToRGBA(""), (RGBAComponents{0, 0, 0, 1}));
  EXPECT_EQ(displayP3HexToRGBA("#"), (RGBAComponents{0, 0, 0, 1}));
}

TEST(DisplayP3HexToRGBATest, ScanStopsAtTheFirstNonDigitAndSkipsHashes) {
  EXPECT_EQ(displayP3HexToRGBA("#12zz"), bytes(0, 0, 0x12, 255));
  EXPECT_EQ(displayP3HexToRGBA("##00FF"), bytes(0, 0, 0xFF, 255));
  EXPECT_EQ(displayP3HexToRGBA("0x00FF"), bytes(0, 0, 0xFF, 255));
}

TEST(ColorFromHexStringTest, CountsTheStrippedStringAndFailsToOpaqueBlack) {
  const Color color = colorFromHexString("  #FF0048 ");
  EXPECT_EQ(color.colorSpace(), ColorSpace::deviceRGB);
  EXPECT_EQ(color.components(), (RGBAComponents{1, 0, 72 / 255.0, 1}));
  EXPECT_EQ(colorFromHexString("#FF004880").components(), bytes(0xFF, 0x00, 0x48, 0x80));
  EXPECT_EQ(colorFromHexString("zzzzzzzzz"), Color::rgb(0, 0, 0, 1));
  EXPECT_EQ(colorFromHexString("zzz"), Color::rgb(0, 0, 0, 1));
  // Unicode white space is stripped before both the scan and the count.
  EXPECT_EQ(colorFromHexString("\u3000#FF0048\u00A0").components(), (RGBAComponents{1, 0, 72 / 255.0, 1}));
}

TEST(DynamicDisplayP3ColorTest, IsNamedLightFirstAndResolvesPerAppearance) {
  const Color color = dynamicDisplayP3Color("#BBBBBB", "#6B6B6B");
  EXPECT_TRUE(color.isDynamic());
  EXPECT_EQ(color.name(), "#BBBBBB#6B6B6B");
  const RGBAComponents light = displayP3HexToRGBA("#BBBBBB");
  const RGBAComponents dark = displayP3HexToRGBA("#6B6B6B");
  EXPECT_EQ(color.resolved(Appearance::light()), Color::displayP3(light.red, light.green, light.blue, 1));
  EXPECT_EQ(color.resolved(Appearance::dark()), Color::displayP3(dark.red, dark.green, dark.blue, 1));
}

}  // namespace
}  // namespace kestrona
