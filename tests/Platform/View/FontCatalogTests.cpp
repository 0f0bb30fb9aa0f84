#include <gtest/gtest.h>

#include <algorithm>

#include "Platform/View/FontCatalog.h"

namespace kestrona {
namespace {

TEST(FontCatalogTest, TakesTheFirstInstalledCandidateOfEachDesign) {
  const FontCatalog everything({"DejaVu Sans", "Comfortaa", "Inter", "Quicksand"});
  EXPECT_EQ(everything.family(Font::Design::defaultDesign), "Inter");
  EXPECT_EQ(everything.family(Font::Design::rounded), "Quicksand");

  const FontCatalog secondChoices({"DejaVu Sans", "Comfortaa"});
  EXPECT_EQ(secondChoices.family(Font::Design::defaultDesign), "DejaVu Sans");
  EXPECT_EQ(secondChoices.family(Font::Design::rounded), "Comfortaa");
}

TEST(FontCatalogTest, FallsBackFromRoundedToTheSansFaceAndThenToTheGenericFamily) {
  const FontCatalog noRoundedFace({"DejaVu Sans", "Noto Serif"});
  EXPECT_EQ(noRoundedFace.family(Font::Design::rounded), "DejaVu Sans");

  const FontCatalog nothingKnown({"Noto Serif"});
  EXPECT_EQ(nothingKnown.family(Font::Design::defaultDesign), FontCatalog::kGenericFamily);
  EXPECT_EQ(nothingKnown.family(Font::Design::rounded), FontCatalog::kGenericFamily);
}

TEST(FontCatalogTest, MatchesFamilyNamesWithoutRegardToCase) {
  const FontCatalog catalog({"inter", "QUICKSAND"});
  EXPECT_EQ(catalog.family(Font::Design::defaultDesign), "Inter");
  EXPECT_EQ(catalog.family(Font::Design::rounded), "Quicksand");
}

TEST(FontCatalogTest, ResolvesSizeByScaleAndKeepsWeightAndDigits) {
  const FontCatalog catalog({"Inter", "Quicksand"});
  const ResolvedFont font =
      catalog.resolve(Font::system(34, Font::Weight::semibold, Font::Design::rounded).monospacedDigit(), 0.5);
  EXPECT_EQ(font, (ResolvedFont{"Quicksand", 17, Font::Weight::semibold, true}));
}

TEST(FontCatalogTest, SystemCatalogChoosesAnInstalledCandidateOrTheGenericFamily) {
  for (Font::Design design : {Font::Design::defaultDesign, Font::Design::rounded}) {
    const std::string& chosen = FontCatalog::system().family(design);
    const auto& own = FontCatalog::candidates(design);
    const auto& sans = FontCatalog::candidates(Font::Design::defaultDesign);
    EXPECT_TRUE(std::find(own.begin(), own.end(), chosen) != own.end() ||
                std::find(sans.begin(), sans.end(), chosen) != sans.end() || chosen == FontCatalog::kGenericFamily)
        << chosen;
  }
}

}  // namespace
}  // namespace kestrona
