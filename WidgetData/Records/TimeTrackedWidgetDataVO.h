// The record of the files "weeklyTimeTrackedChart" and
// "monthlyTimeTrackedChart": the chart's columns in date order with their
// values in seconds, the running time entry if any, and the first weekday of
// the writer's calendar (1 is Sunday).
//
// empty() stands in for a file that can't be read: no bars, first weekday 0,
// and a current entry that is present but has no task, no begin and the
// colour white. A plain value, compared field by field; safe to share
// between threads.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "WidgetData/Records/ChartBarVO.h"
#include "WidgetData/Records/CurrentTimeEntryVO.h"

namespace kestrona {

struct TimeTrackedWidgetDataVO {
  std::vector<ChartBarVO> bars;
  std::optional<CurrentTimeEntryVO> currentTimeEntry;
  std::int64_t firstDayOfWeek = 0;

  static TimeTrackedWidgetDataVO empty();

  friend bool operator==(const TimeTrackedWidgetDataVO&, const TimeTrackedWidgetDataVO&) = default;
};

void to_json(nlohmann::json& json, const TimeTrackedWidgetDataVO& data);
void from_json(const nlohmann::json& json, TimeTrackedWidgetDataVO& data);

}  // namespace kestrona
