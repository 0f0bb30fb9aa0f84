// What a revenue chart widget shows at one moment: its bars, in money, with
// the running time entry merged in at its hourly rate, the first weekday
// of the application's calendar, and the locale identifier to format money
// with (spelled `currencyLocalIdentifier`, as in the file). A plain value.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Platform/Time/Date.h"
#include "SharedWidgets/Timelines/ChartBar.h"

namespace kestrona {

struct RevenueWidgetEntry {
  Date date;
  std::vector<ChartBar> chartBars;
  std::int64_t firstDayOfWeek = 0;
  std::string currencyLocalIdentifier;

  friend bool operator==(const RevenueWidgetEntry&, const RevenueWidgetEntry&) = default;
};

}  // namespace kestrona
