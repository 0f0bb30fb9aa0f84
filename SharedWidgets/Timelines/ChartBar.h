// One column of a chart widget and one task's share of it, as the views
// draw them: dates are Dates and colours are colours. `value` and
// `totalValue` are in the chart's unit (seconds, or money). Segments and
// totals change when the running time entry is merged in. Plain values.
#pragma once

#include <string>
#include <vector>

#include "Platform/Color/Color.h"
#include "Platform/Time/Date.h"
#include "WidgetData/Records/ChartBarVO.h"

namespace kestrona {

struct ChartBarSegment {
  std::string taskId;
  Color color;
  double value = 0;

  friend bool operator==(const ChartBarSegment&, const ChartBarSegment&) = default;
};

struct ChartBar {
  Date date;
  std::vector<ChartBarSegment> segments;
  double totalValue = 0;

  // The bar of a file's column; its time-entry count is dropped.
  static ChartBar fromRecord(const ChartBarVO& bar);

  friend bool operator==(const ChartBar&, const ChartBar&) = default;
};

}  // namespace kestrona
