// Text layout with the real measurer and this machine's fonts: what Pango
// does with widths, line limits, truncation, scale and scripts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "Platform/View/Layout.h"
#include "Platform/View/PangoText.h"
#include "Platform/View/PangoTextMeasurer.h"

namespace kestrona {
namespace {

LayoutTree layOut(const View& root, Size canvas) {
  static const PangoTextMeasurer measurer;
  return layout(root, canvas, measurer, FontCatalog::system(), LayoutEnvironment{Appearance::dark(), Date()});
}

const std::string kLongName = "Quarterly planning with the whole design team";

TEST(PangoTextLayoutTest, LongTextTruncatesOnOneLineAndWrapsWithoutALimit) {
  const auto oneLine = layOut(Text(kLongName).font(Font::system(17, Font::Weight::bold)).lineLimit(1), {120, 100});
  const LaidOutNode& cut = *oneLine.findText(kLongName);
  EXPECT_TRUE(cut.text->isTruncated);
  EXPECT_EQ(cut.text->lineCount, 1);
  EXPECT_LE(cut.frame.width(), 120);
  EXPECT_GT(cut.frame.width(), 100);  // the ellipsis follows as much text as fits
  EXPECT_NEAR(cut.frame.height(), 17 * 1.2, 17 * 0.3);

  const auto wrapped = layOut(Text(kLongName).font(Font::system(13)), {120, 200});
  const LaidOutNode& lines = *wrapped.findText(kLongName);
  EXPECT_FALSE(lines.text->isTruncated);
  EXPECT_GE(lines.text->lineCount, 3);
  EXPECT_LE(lines.frame.width(), 120);
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

TEST(PangoTextLayoutTest, EmptyTextHasALineHeightAndNoWidth) {
  const auto tree = layOut(Text("").font(Font::system(14)), {100, 100});
  const LaidOutNode& node = *tree.nodesOfKind(ViewKind::text)[0];
  EXPECT_DOUBLE_EQ(node.frame.width(), 0);
  EXPECT_GT(node.frame.height(), 10);
}

// How Pango set a text: the families that drew it, run by run; how many
// of its characters no font had (each drawn as a box); and where the
// ellipsis stands, as a fraction of the text's width (none when whole).
struct Shaped {
  std::vector<std::string> families;
  int unknownGlyphs = 0;
  std::optional<double> ellipsisAt;
};

Shaped shape(const std::string& text, const Font& font, std::optional<double> maxWidth = std::nullopt) {
  PangoContext* context = pango_font_map_create_context(pango_cairo_font_map_get_default());
  pangotext::configureContext(context);
  pangotext::LayoutPointer layout(pango_layout_new(context));
  pangotext::configureLayout(
      layout.get(),
      TextMeasureRequest{
          .text = text, .font = FontCatalog::system().resolve(font), .maxWidth = maxWidth, .lineLimit = 1});
  Shaped shaped{{}, pango_layout_get_unknown_glyphs_count(layout.get()), std::nullopt};
  PangoRectangle whole;
  pango_layout_get_extents(layout.get(), nullptr, &whole);
  PangoLayoutIter* iterator = pango_layout_get_iter(layout.get());
  do {
    PangoLayoutRun* run = pango_layout_iter_get_run_readonly(iterator);
    if (run == nullptr) continue;
    PangoFontDescription* description = pango_font_describe(run->item->analysis.font);
    std::string family = pango_font_description_get_family(description);
    pango_font_description_free(description);
    if (std::find(shaped.families.begin(), shaped.families.end(), family) == shaped.families.end()) {
      shaped.families.push_back(std::move(family));
    }
    if (run->item->analysis.flags & PANGO_ANALYSIS_FLAG_IS_ELLIPSIS) {
      PangoRectangle extents;
      pango_layout_iter_get_run_extents(iterator, nullptr, &extents);
      shaped.ellipsisAt = (extents.x + extents.width / 2.0 - whole.x) / whole.width;
    }
  } while (pango_layout_iter_next_run(iterator));
  pango_layout_iter_free(iterator);
  g_object_unref(context);
  return shaped;
}

// Names in every script a user may type are drawn in real glyphs, by the
// family chosen for that script: the fonts come from scripts/setup.
TEST(PangoTextLayoutTest, EveryScriptIsDrawnInGlyphsOfItsFallbackFamily) {
  const struct {
    const char* name;
    const char* family;
  } cases[] = {
      {"Σχέδια για την καμπάνια", "Inter"},        {"עבודה עם לקוחות", "DejaVu Sans"},
      {"رسومات المفهوم", "Noto Sans Arabic UI"},   {"デザインの下書き", "WenQuanYi Micro Hei"},
      {"客户会议", "WenQuanYi Micro Hei"},         {"회의록 정리", "WenQuanYi Micro Hei"},
      {"🎨🚀👩‍💻", "Noto Color Emoji"},
  };
  for (const Font& font :
       {Font::system(17, Font::Weight::bold), Font::system(14, Font::Weight::semibold, Font::Design::rounded)}) {
    for (const auto& sample : cases) {
      SCOPED_TRACE(sample.name);
      const Shaped shaped = shape(sample.name, font);
      EXPECT_EQ(shaped.unknownGlyphs, 0);
      EXPECT_THAT(shaped.families, ::testing::Contains(sample.family));
    }
  }
}

// A name cut short keeps its beginning and loses its end, in the direction
// it is written in: the ellipsis stands at the right of a left-to-right
// name and at the left of a right-to-left one.
TEST(PangoTextLayoutTest, TruncationCutsTheEndOfTheTextsOwnDirection) {
  const struct {
    const char* name;
    bool rightToLeft;
  } cases[] = {
      {"Concept sketches for the spring campaign", false},
      {"סקיצות קונספט לקמפיין האביב", true},
      {"رسومات المفهوم لحملة الربيع", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Shaped shaped = shape(c.name, Font::system(17, Font::Weight::bold), 100);
    ASSERT_TRUE(shaped.ellipsisAt.has_value());
    if (c.rightToLeft) {
      EXPECT_LT(*shaped.ellipsisAt, 0.2);
    } else {
      EXPECT_GT(*shaped.ellipsisAt, 0.8);
    }
  }
}

}  // namespace
}  // namespace kestrona
