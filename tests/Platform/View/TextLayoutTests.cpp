// Text layout with the real measurer and this machine's fonts: what Pango
// does with widths, line limits, truncation and scale.
#include <gtest/gtest.h>

#include "Platform/View/Layout.h"
#include "Platform/View/PangoTextMeasurer.h"

namespace kestrona {
namespace {

LayoutTree layOut(const View& root, Size canvas) {
  static const PangoTextMeasurer measurer;
  return layout(root, canvas, measurer, FontCatalog::system(), LayoutEnvironment{Appearance::dark(), Date()});
}

const std::string kLongName = "Quarterly planning with the whole design team";

TEST(PangoTextLayoutTest, OneLineTextIsTruncatedWithAnEllipsisInsideItsWidth) {
  const auto tree = layOut(Text(kLongName).font(Font::system(17, Font::Weight::bold)).lineLimit(1), {120, 100});
  const LaidOutNode& node = *tree.findText(kLongName);
  EXPECT_TRUE(node.text->isTruncated);
  EXPECT_EQ(node.text->lineCount, 1);
  EXPECT_LE(node.frame.width(), 120);
  EXPECT_GT(node.frame.width(), 100);  // the ellipsis follows as much text as fits
  EXPECT_NEAR(node.frame.height(), 17 * 1.2, 17 * 0.3);
}

TEST(PangoTextLayoutTest, UnlimitedTextWrapsIntoLinesWithinItsWidth) {
  const auto tree = layOut(Text(kLongName).font(Font::system(13)), {120, 200});
  const LaidOutNode& node = *tree.findText(kLongName);
  EXPECT_FALSE(node.text->isTruncated);
  EXPECT_GE(node.text->lineCount, 3);
  EXPECT_LE(node.frame.width(), 120);
}

TEST(PangoTextLayoutTest, MinimumScaleShrinksALongNameUntilItFits) {
  const std::string name = "Sketching sessions";
  const Font font = Font::system(17, Font::Weight::bold);
  const double natural = layOut(Text(name).font(font), {1000, 100}).findText(name)->frame.width();
  const double available = natural * 0.9;

  const auto tree = layOut(Text(name).font(font).lineLimit(1).minimumScaleFactor(0.8), {available, 100});
  const LaidOutText& text = *tree.findText(name)->text;
  EXPECT_FALSE(text.isTruncated);
  EXPECT_LT(text.scale, 0.91);
  EXPECT_GT(text.scale, 0.85);
  EXPECT_LE(tree.findText(name)->frame.width(), available);
}

TEST(PangoTextLayoutTest, HeavierAndLargerFontsMeasureWider) {
  const std::string digits = "1:23:45";
  auto width = [&](const Font& font) {
    return layOut(Text(digits).font(font), {1000, 100}).findText(digits)->frame.width();
  };
  const double regular = width(Font::system(26));
  EXPECT_GT(width(Font::system(34)), regular * 1.2);
  EXPECT_GT(width(Font::system(26, Font::Weight::black)), regular);
}

// The sans faces have tabular figures; the rounded ones do not, and draw
// their own digits whatever is asked.
TEST(PangoTextLayoutTest, MonospacedDigitsGiveEveryDigitTheSameWidth) {
  const Font font = Font::system(26, Font::Weight::semibold).monospacedDigit();
  auto width = [&](const std::string& digits) {
    return layOut(Text(digits).font(font), {1000, 100}).findText(digits)->frame.width();
  };
  // Within rounding of glyph positions, far below the width of a digit.
  EXPECT_NEAR(width("1111"), width("0000"), 0.1);
  EXPECT_NEAR(width("1111111"), width("8048083"), 0.1);
}

TEST(PangoTextLayoutTest, TextsOfBothDesignsAreDrawnInTheCatalogsFamilies) {
  const auto tree = layOut(VStack({Text("Concept").font(Font::system(17, Font::Weight::bold)),
                                   Text("0:42").font(Font::system(26, Font::Weight::semibold, Font::Design::rounded))}),
                           {170, 170});
  EXPECT_EQ(tree.findText("Concept")->text->font.family, FontCatalog::system().family(Font::Design::defaultDesign));
  EXPECT_EQ(tree.findText("0:42")->text->font.family, FontCatalog::system().family(Font::Design::rounded));
}

TEST(PangoTextLayoutTest, EmptyTextHasALineHeightAndNoWidth) {
  const auto tree = layOut(Text("").font(Font::system(14)), {100, 100});
  const LaidOutNode& node = *tree.nodesOfKind(ViewKind::text)[0];
  EXPECT_DOUBLE_EQ(node.frame.width(), 0);
  EXPECT_GT(node.frame.height(), 10);
}

}  // namespace
}  // namespace kestrona
