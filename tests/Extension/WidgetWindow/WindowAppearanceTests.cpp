#include <gtest/gtest.h>

#include "Extension/WidgetWindow/WindowAppearance.h"

namespace kestrona {
namespace {

TEST(WindowAppearanceTest, DarkWhenGtkIsAskedForADarkThemeInAnyWay) {
  const struct {
    bool prefersDark;
    const char* themeName;
    std::optional<std::string_view> environment;
    bool dark;
  } cases[] = {
      {false, "Adwaita", std::nullopt, false},
      {true, "Adwaita", std::nullopt, true},
      {false, "Adwaita-dark", std::nullopt, true},
      {false, "Yaru:dark", std::nullopt, true},
      {false, "Adwaita", "Adwaita:dark", true},
      {false, "Adwaita-dark", "Adwaita", false},
      {false, "Darkness", std::nullopt, false},
  };
  for (const auto& example : cases) {
    EXPECT_EQ(windowAppearance(example.prefersDark, example.themeName, example.environment).isDark(), example.dark)
        << example.themeName << " / " << example.environment.value_or("(unset)");
  }
  EXPECT_NE(focusRingColor().resolved(Appearance::dark()), focusRingColor().resolved(Appearance::light()));
}

}  // namespace
}  // namespace kestrona
