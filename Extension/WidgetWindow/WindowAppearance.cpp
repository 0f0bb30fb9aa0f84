#include "Extension/WidgetWindow/WindowAppearance.h"

namespace kestrona {
namespace {

bool namesDarkVariant(std::string_view theme) {
  for (std::string_view suffix : {std::string_view("-dark"), std::string_view(":dark")}) {
    if (theme.size() > suffix.size() && theme.substr(theme.size() - suffix.size()) == suffix) return true;
  }
  return false;
}

}  // namespace

Appearance windowAppearance(bool prefersDarkTheme, std::string_view themeName,
                            std::optional<std::string_view> themeEnvironment) {
  const std::string_view theme = themeEnvironment && !themeEnvironment->empty() ? *themeEnvironment : themeName;
  return prefersDarkTheme || namesDarkVariant(theme) ? Appearance::dark() : Appearance::light();
}

const Color& focusRingColor() {
  static const Color color = Color::dynamic("focusRingColor", [](const Appearance& appearance) {
    return appearance.isDark() ? Color::deviceRGB(0.47, 0.68, 0.93, 1) : Color::deviceRGB(0.11, 0.44, 0.85, 1);
  });
  return color;
}

}  // namespace kestrona
