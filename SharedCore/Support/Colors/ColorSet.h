// Colour sets: the palette every task draws its colours from.
//
// A task stores only the raw value of its ColorSet::ID (a signed 16-bit
// integer, persisted, never renumbered). From the ID, ColorSet gives the
// task's base colour, a background colour tuned so that light content
// stands out on it, and a family of opacities. Both colours are dynamic:
// each resolves to its light or dark Display P3 value in the appearance it
// is drawn in, and is named by its two hex strings, light first
// ("#BBBBBB#6B6B6B" for the base colour of gray).
//
// The opacities are computed in 32-bit floating-point arithmetic, as the
// values handed to the widgets are 32-bit; only
// sidebarTimerOpaqueWhiteBackgroundOpacity() is a 64-bit number.
//
// An unknown raw value gives no ID (fromRawValue<ColorSet::ID>); the caller
// decides what to draw instead. ColorSet is an immutable value, safe to
// share between threads; defaultSet() and white() are made once, on first
// use, from any thread.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "Platform/Color/Color.h"
#include "Platform/Foundation/RawRepresentable.h"

namespace kestrona {

class ColorSet {
 public:
  // The sets, in the order of the palette. The raw values follow the order
  // in which the colours joined the palette.
  enum class ID : std::int16_t {
    white = -2,
    gray = -1,
    red = 0,
    brown = 10,
    orange = 1,
    green2 = 3,
    green = 4,
    teal = 14,
    blue = 6,
    violett = 7,
    lightPink = 8,
    indigo = 15,
    lightRed = 9,
    pink = 11,
    yellow = 2,
    lightGreen = 13,
    cyan = 5,
    lightBlue = 12,
    lightViolett = 16,
    lightIndigo = 17,
  };

  // The set of the palette row of id.
  explicit ColorSet(ID id);

  // The gray set, which stands in for a task without a colour of its own.
  // (The design calls it "default", a reserved word here.)
  static const ColorSet& defaultSet();
  // The white set.
  static const ColorSet& white();

  ID id() const noexcept { return id_; }
  const Color& baseColor() const noexcept { return baseColor_; }
  const Color& backgroundColorOptimizedForLightContent() const noexcept {
    return backgroundColorOptimizedForLightContent_;
  }

  // The Display P3 hex strings of the palette row ("#RRGGBB").
  std::string_view displayP3HexString(bool isDarkMode) const;
  std::string_view displayP3HexBackgroundColorOptimizedForLightContent(bool isDarkMode) const;

  // The base opacity of the set, times 0.66 when dark.
  float sidebarTimerRunningBackgroundOpacity(bool isDarkMode) const;
  // The above times 1.8 when dark, times 1.65 when light.
  float startPauseButtonBackgroundOpacity(bool isDarkMode) const;
  // The first above times 0.85.
  float runningSessionListRowBackgroundOpacity(bool isDarkMode) const;
  // The first above times 0.6.
  float dashboardTimerRunningBackgroundOpacity(bool isDarkMode) const;
  // The first above times 0.625.
  float runningTaskRowOpacity(bool isDarkMode) const;
  // 0.15 when dark; the running-button opacity of the set when light.
  float runningStartPauseButtonBackgroundOpacity(bool isDarkMode) const;
  // 0 when dark; when light 0.85 for green2, 0.75 for lightBlue, 0.7 for
  // yellow and 0 for the others.
  double sidebarTimerOpaqueWhiteBackgroundOpacity(bool isDarkMode) const;

  friend bool operator==(const ColorSet&, const ColorSet&) = default;

 private:
  ID id_;
  Color baseColor_;
  Color backgroundColorOptimizedForLightContent_;
};

template <>
struct RawRepresentable<ColorSet::ID> {
  using RawValue = std::int16_t;
  static constexpr RawValue rawValue(ColorSet::ID id) { return static_cast<RawValue>(id); }
  static constexpr std::optional<ColorSet::ID> fromRawValue(RawValue raw) {
    if (raw < -2 || raw > 17) return std::nullopt;
    return static_cast<ColorSet::ID>(raw);
  }
};

template <>
inline constexpr std::array<ColorSet::ID, 20> allCases<ColorSet::ID> = {
    ColorSet::ID::white,     ColorSet::ID::gray,      ColorSet::ID::red,         ColorSet::ID::brown,
    ColorSet::ID::orange,    ColorSet::ID::green2,    ColorSet::ID::green,       ColorSet::ID::teal,
    ColorSet::ID::blue,      ColorSet::ID::violett,   ColorSet::ID::lightPink,   ColorSet::ID::indigo,
    ColorSet::ID::lightRed,  ColorSet::ID::pink,      ColorSet::ID::yellow,      ColorSet::ID::lightGreen,
    ColorSet::ID::cyan,      ColorSet::ID::lightBlue, ColorSet::ID::lightViolett, ColorSet::ID::lightIndigo,
};

}  // namespace kestrona
