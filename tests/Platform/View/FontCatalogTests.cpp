#include "Platform/View/FontCatalog.h"

#include <gtest/gtest.h>

namespace kestrona {
namespace {

using Families = std::vector<std::string>;

TEST(FontCatalogTest, ChoosesTheFirstInstalledCandidateAndFallsBackToTheSansFaceThenTheGenericFamily) {
  const struct {
    Families installed;
    std::string sans;
    std::string rounded;
  } cases[] = {
      {{"DejaVu Sans", "Comfortaa", "inter", "QUICKSAND"}, "Inter", "Quicksand"},
      {{"DejaVu Sans", "Comfortaa"}, "DejaVu Sans", "Comfortaa"},
      {{"DejaVu Sans", "Noto Serif"}, "DejaVu Sans", "DejaVu Sans"},
      {{"Noto Serif"}, FontCatalog::kGenericFamily, FontCatalog::kGenericFamily},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.installed));
    const FontCatalog catalog(c.installed);
    EXPECT_EQ(catalog.family(Font::Design::defaultDesign), c.sans);
    EXPECT_EQ(catalog.family(Font::Design::rounded), c.rounded);
  }
}

// Characters a design face lacks go to the installed script families in
// their fixed order (Arabic before DejaVu Sans's plainer Arabic); the
// rounded design first tries the sans face. A family never falls back on
// itself.
TEST(FontCatalogTest, FallbacksAreTheInstalledScriptFamiliesInOrder) {
  const FontCatalog everything(
      {"Inter", "Quicksand", "DejaVu Sans", "WenQuanYi Micro Hei", "Noto Color Emoji", "Noto Sans Arabic UI"});
  const Families scripts{"Noto Sans Arabic UI", "WenQuanYi Micro Hei", "DejaVu Sans"};
  EXPECT_EQ(everything.fallbackFamilies(Font::Design::defaultDesign), scripts);
  Families rounded{"Inter"};
  rounded.insert(rounded.end(), scripts.begin(), scripts.end());
  EXPECT_EQ(everything.fallbackFamilies(Font::Design::rounded), rounded);

  const FontCatalog plain({"DejaVu Sans", "WenQuanYi Micro Hei"});
  EXPECT_EQ(plain.fallbackFamilies(Font::Design::defaultDesign), Families{"WenQuanYi Micro Hei"});
  EXPECT_EQ(plain.fallbackFamilies(Font::Design::rounded), Families{"WenQuanYi Micro Hei"});

  const ResolvedFont font = everything.resolve(Font::system(34, Font::Weight::semibold, Font::Design::rounded), 0.5);
  EXPECT_EQ(font, (ResolvedFont{"Quicksand", 17, Font::Weight::semibold, false, rounded}));
}

}  // namespace
}  // namespace kestrona
