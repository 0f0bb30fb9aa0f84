// The sizes a widget can be placed in on the desktop.
//
// A widget lists the families it supports, in the order in which the
// gallery offers them; the first is the one a widget gets when nobody asks
// for another. The raw values are the names by which people and scripts
// write a family ("systemSmall"), and they never change.
//
// Plain enumerators: immutable and safe from any thread.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "Platform/Foundation/RawRepresentable.h"

namespace kestrona {

enum class WidgetFamily {
  systemSmall,
  systemMedium,
  systemLarge,
};

template <>
inline constexpr std::array<WidgetFamily, 3> allCases<WidgetFamily> = {
    WidgetFamily::systemSmall,
    WidgetFamily::systemMedium,
    WidgetFamily::systemLarge,
};

template <>
struct RawRepresentable<WidgetFamily> {
  using RawValue = std::string_view;

  static constexpr RawValue rawValue(WidgetFamily family) {
    switch (family) {
      case WidgetFamily::systemSmall: return "systemSmall";
      case WidgetFamily::systemMedium: return "systemMedium";
      case WidgetFamily::systemLarge: return "systemLarge";
    }
    return {};
  }

  static constexpr std::optional<WidgetFamily> fromRawValue(RawValue raw) {
    for (WidgetFamily family : allCases<WidgetFamily>) {
      if (rawValue(family) == raw) return family;
    }
    return std::nullopt;
  }
};

}  // namespace kestrona
