// The record of the files "weeklyRevenueChart" and "monthlyRevenueChart":
// the chart's columns in date order with their values in money, the running
// time entry and its hourly rate if any, the locale identifier to format
// money with (the key is spelled `currencyLocalIdentifier`), and the first
// weekday of the writer's calendar (1 is Sunday).
//
// empty() stands in for a file that can't be read: no bars, first weekday
// 0, no rate, an empty locale identifier, and the same present-but-empty
// current entry as TimeTrackedWidgetDataVO::empty(). A plain value,
// compared field by field; safe to share between threads.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "WidgetData/Records/ChartBarVO.h"
#include "WidgetData/Records/CurrentTimeEntryVO.h"

namespace kestrona {

struct RevenueWidgetDataVO {
  std::vector<ChartBarVO> bars;
  std::optional<CurrentTimeEntryVO> currentTimeEntry;
  std::optional<double> currentTimeEntryHourRate;
  std::string currencyLocalIdentifier;
  std::int64_t firstDayOfWeek = 0;

  static RevenueWidgetDataVO empty();

  friend bool operator==(const RevenueWidgetDataVO&, const RevenueWidgetDataVO&) = default;
};

void to_json(nlohmann::json& json, const RevenueWidgetDataVO& data);
void from_json(const nlohmann::json& json, RevenueWidgetDataVO& data);

}  // namespace kestrona
