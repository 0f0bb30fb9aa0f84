// The kinds of widget, and with them the files the application writes.
//
// A WidgetType's raw value is at once the name of its file in the widget
// store directory, the widget's kind string and its identity across the
// system, so the raw values must never change. Each kind also has a name and
// a description for the widget gallery, looked up as localised texts.
//
// Values are plain enumerators: immutable and safe from any thread.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Foundation/RawRepresentable.h"

namespace kestrona {

enum class WidgetType {
  timer,
  weeklyTimeTrackedChart,
  monthlyTimeTrackedChart,
  weeklyRevenueChart,
  monthlyRevenueChart,
  recentTasks,
};

template <>
inline constexpr std::array<WidgetType, 6> allCases<WidgetType> = {
    WidgetType::timer,
    WidgetType::weeklyTimeTrackedChart,
    WidgetType::monthlyTimeTrackedChart,
    WidgetType::weeklyRevenueChart,
    WidgetType::monthlyRevenueChart,
    WidgetType::recentTasks,
};

template <>
struct RawRepresentable<WidgetType> {
  using RawValue = std::string_view;

  static constexpr RawValue rawValue(WidgetType type) {
    switch (type) {
      case WidgetType::timer: return "timer";
      case WidgetType::weeklyTimeTrackedChart: return "weeklyTimeTrackedChart";
      case WidgetType::monthlyTimeTrackedChart: return "monthlyTimeTrackedChart";
      case WidgetType::weeklyRevenueChart: return "weeklyRevenueChart";
      case WidgetType::monthlyRevenueChart: return "monthlyRevenueChart";
      case WidgetType::recentTasks: return "recentTasks";
    }
    return {};
  }

  // Raw values compare byte for byte: "Timer" is not a widget type.
  static constexpr std::optional<WidgetType> fromRawValue(RawValue raw) {
    for (WidgetType type : allCases<WidgetType>) {
      if (rawValue(type) == raw) return type;
    }
    return std::nullopt;
  }
};

// The widget's name in the widget gallery, as a localised text.
std::string displayName(WidgetType type);
// What the widget shows, for the widget gallery, as a localised text.
std::string description(WidgetType type);

}  // namespace kestrona
