// One column of a chart file, and one task's share of it.
//
// A ChartBarVO stands for one charted period (a day in the weekly and
// monthly charts): its date, how many time entries it sums, one segment per
// task and the column's total. `value` and `totalValue` are in one unit:
// seconds in the time-tracked charts, money in the revenue charts. Every key
// is required; `segments` may be empty but not absent. Plain values,
// compared field by field; safe to share between threads.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "WidgetData/Records/ColorTransferable.h"

namespace kestrona {

struct ChartBarSegmentVO {
  // The absolute string of the task's object URI.
  std::string taskId;
  ColorTransferable taskColor;
  double value = 0;

  friend bool operator==(const ChartBarSegmentVO&, const ChartBarSegmentVO&) = default;
};

struct ChartBarVO {
  // Seconds since 1970: the start of the column's period.
  double date = 0;
  std::int64_t timeEntryCount = 0;
  std::vector<ChartBarSegmentVO> segments;
  double totalValue = 0;

  friend bool operator==(const ChartBarVO&, const ChartBarVO&) = default;
};

void to_json(nlohmann::json& json, const ChartBarSegmentVO& segment);
void from_json(const nlohmann::json& json, ChartBarSegmentVO& segment);
void to_json(nlohmann::json& json, const ChartBarVO& bar);
void from_json(const nlohmann::json& json, ChartBarVO& bar);

}  // namespace kestrona
