// The four chart widgets: time tracked and revenue, each weekly and
// monthly, in the medium and small families (medium first). Each is fed by
// the file of its WidgetType, whose raw value is also its kind, through
// TimeTrackedWidgetProvider or RevenueWidgetProvider with its date range.
//
// Values holding the group name, like TimerWidget; the parameterless
// constructors are fatal errors.
#pragma once

#include <string>

#include "Platform/WidgetHost/WidgetConfiguration.h"

namespace kestrona {

struct TimeTrackedWeeklyChartWidget {
  static constexpr std::string_view kind = "weeklyTimeTrackedChart";
  std::string appGroupName;
  TimeTrackedWeeklyChartWidget();
  explicit TimeTrackedWeeklyChartWidget(std::string groupName) : appGroupName(std::move(groupName)) {}
  WidgetConfiguration configuration() const;
};

struct TimeTrackedMonthlyChartWidget {
  static constexpr std::string_view kind = "monthlyTimeTrackedChart";
  std::string appGroupName;
  TimeTrackedMonthlyChartWidget();
  explicit TimeTrackedMonthlyChartWidget(std::string groupName) : appGroupName(std::move(groupName)) {}
  WidgetConfiguration configuration() const;
};

struct RevenueWeeklyChartWidget {
  static constexpr std::string_view kind = "weeklyRevenueChart";
  std::string appGroupName;
  RevenueWeeklyChartWidget();
  explicit RevenueWeeklyChartWidget(std::string groupName) : appGroupName(std::move(groupName)) {}
  WidgetConfiguration configuration() const;
};

struct RevenueMonthlyChartWidget {
  static constexpr std::string_view kind = "monthlyRevenueChart";
  std::string appGroupName;
  RevenueMonthlyChartWidget();
  explicit RevenueMonthlyChartWidget(std::string groupName) : appGroupName(std::move(groupName)) {}
  WidgetConfiguration configuration() const;
};

}  // namespace kestrona
