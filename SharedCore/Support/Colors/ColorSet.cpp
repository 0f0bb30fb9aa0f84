#include "SharedCore/Support/Colors/ColorSet.h"

#include <array>
#include <string>

#include "Platform/Foundation/FatalError.h"
#include "SharedCore/Support/Colors/ColorHexParsing.h"

namespace kestrona {

namespace {

struct PaletteRow {
  ColorSet::ID id;
  std::string_view baseLight;
  std::string_view baseDark;
  std::string_view backgroundLight;
  std::string_view backgroundDark;
  float baseOpacity;
  float runningButtonOpacity;
};

using ID = ColorSet::ID;

constexpr std::array<PaletteRow, 20> kPalette{{
    {ID::white, "#FFFFFF", "#FFFFFF", "#BABABA", "#6B6B6B", 0.2f, 0.25f},
    {ID::gray, "#BBBBBB", "#6B6B6B", "#BABABA", "#6B6B6B", 0.2f, 0.25f},
    {ID::red, "#EB1753", "#FF0048", "#EB1753", "#EB1753", 0.14f, 0.3f},
    {ID::brown, "#A2845E", "#B79467", "#9B7D56", "#A37E4F", 0.2f, 0.25f},
    {ID::orange, "#FF9500", "#FF9500", "#F18D00", "#F18D00", 0.14f, 0.25f},
    {ID::green2, "#9CD824", "#A0E810", "#8EC71C", "#88B728", 0.2f, 0.25f},
    {ID::green, "#28CD5F", "#05D74A", "#1FB551", "#22B553", 0.14f, 0.28f},
    {ID::teal, "#55BEF0", "#55BEF0", "#5AB3D0", "#3AB8DE", 0.19f, 0.25f},
    {ID::blue, "#008CF6", "#0091FF", "#007DDB", "#007DDB", 0.2f, 0.25f},
    {ID::violett, "#B348E9", "#B449EA", "#A33BD7", "#8E39B9", 0.18f, 0.2f},
    {ID::lightPink, "#FF73C4", "#FF8ACE", "#EF61B3", "#EF61B3", 0.19f, 0.3f},
    {ID::indigo, "#605EEA", "#5654F3", "#5451E4", "#4B49D4", 0.17f, 0.25f},
    {ID::lightRed, "#FF8084", "#FF8084", "#F16C70", "#F16C70", 0.19f, 0.25f},
    {ID::pink, "#E12392", "#E41A90", "#EF61B3", "#EF61B3", 0.16f, 0.25f},
    {ID::yellow, "#FFCC00", "#FFCC00", "#E1B400", "#DDB100", 0.15f, 0.25f},
    {ID::lightGreen, "#39E68C", "#31F38F", "#2BCF7A", "#2ECB7A", 0.13f, 0.3f},
    {ID::cyan, "#2BCAD0", "#3AE8E5", "#18B0B8", "#10A6AE", 0.15f, 0.3f},
    {ID::lightBlue, "#7FC8EC", "#73DEFF", "#75C4EB", "#5ECBEC", 0.17f, 0.21f},
    {ID::lightViolett, "#B385F8", "#B584FF", "#A776F0", "#A776F0", 0.18f, 0.25f},
    {ID::lightIndigo, "#7D8EFA", "#8D9CFF", "#6778E4", "#6778E4", 0.15f, 0.21f},
}};

const PaletteRow& row(ID id) {
  for (const PaletteRow& candidate : kPalette) {
    if (candidate.id == id) return candidate;
  }
  fatalError("A colour set ID outside the palette: " + std::to_string(rawValue(id)));
}

}  // namespace

ColorSet::ColorSet(ID id)
    : id_(id),
      baseColor_(dynamicDisplayP3Color(std::string(row(id).baseLight), std::string(row(id).baseDark))),
      backgroundColorOptimizedForLightContent_(
          dynamicDisplayP3Color(std::string(row(id).backgroundLight), std::string(row(id).backgroundDark))) {}

const ColorSet& ColorSet::defaultSet() {
  static const ColorSet set(ID::gray);
  return set;
}

const ColorSet& ColorSet::white() {
  static const ColorSet set(ID::white);
  return set;
}

std::string_view ColorSet::displayP3HexString(bool isDarkMode) const {
  return isDarkMode ? row(id_).baseDark : row(id_).baseLight;
}

std::string_view ColorSet::displayP3HexBackgroundColorOptimizedForLightContent(bool isDarkMode) const {
  return isDarkMode ? row(id_).backgroundDark : row(id_).backgroundLight;
}

float ColorSet::sidebarTimerRunningBackgroundOpacity(bool isDarkMode) const {
  return row(id_).baseOpacity * (isDarkMode ? 0.66f : 1.0f);
}

float ColorSet::startPauseButtonBackgroundOpacity(bool isDarkMode) const {
  return sidebarTimerRunningBackgroundOpacity(isDarkMode) * (isDarkMode ? 1.8f : 1.65f);
}

float ColorSet::runningSessionListRowBackgroundOpacity(bool isDarkMode) const {
  return sidebarTimerRunningBackgroundOpacity(isDarkMode) * 0.85f;
}

float ColorSet::dashboardTimerRunningBackgroundOpacity(bool isDarkMode) const {
  return sidebarTimerRunningBackgroundOpacity(isDarkMode) * 0.6f;
}

float ColorSet::runningTaskRowOpacity(bool isDarkMode) const {
  return sidebarTimerRunningBackgroundOpacity(isDarkMode) * 0.625f;
}

float ColorSet::runningStartPauseButtonBackgroundOpacity(bool isDarkMode) const {
  return isDarkMode ? 0.15f : row(id_).runningButtonOpacity;
}

double ColorSet::sidebarTimerOpaqueWhiteBackgroundOpacity(bool isDarkMode) const {
  if (isDarkMode) return 0;
  switch (id_) {
    case ID::green2:
      return 0.85;
    case ID::lightBlue:
      return 0.75;
    case ID::yellow:
      return 0.7;
    default:
      return 0;
  }
}

}  // namespace kestrona
