// What a time-tracked chart widget shows at one moment: its bars, in
// seconds, with the running time entry merged in, and the first weekday of
// the application's calendar (1 is Sunday; 0 when there was no file).
// A plain value.
#pragma once

#include <cstdint>
#include <vector>

#include "Platform/Time/Date.h"
#include "SharedWidgets/Timelines/ChartBar.h"

namespace kestrona {

struct TimeTrackedWidgetEntry {
  Date date;
  std::vector<ChartBar> chartBars;
  std::int64_t firstDayOfWeek = 0;

  friend bool operator==(const TimeTrackedWidgetEntry&, const TimeTrackedWidgetEntry&) = default;
};

}  // namespace kestrona
