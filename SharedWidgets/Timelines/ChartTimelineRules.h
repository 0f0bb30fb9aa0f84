// The date rules the two chart providers share.
//
// Staleness. barsAreCurrent(bars, date) tells whether a file's bars may be
// shown at date: the range of the data runs from the first bar's date to
// one day (by Calendar::current()) after the last bar's date, both ends
// included; without bars it is the present moment plus one day. A date
// outside it, such as the first moments of a day after the last bar's day,
// makes the bars stale, and the provider shows none.
//
// Merging. mergingRunningEntry() adds a running time entry to the bars,
// from its begin up to the present moment (Date::now()), day by day: each
// bar takes the part of the entry that lies on the calendar day holding the
// bar's date (Calendar::current()), converted by measure (seconds to the
// chart's unit). That part goes to the first segment of the entry's task,
// or to a new segment at the end with the entry's colour, and to the bar's
// total. An entry with no begin changes nothing; an entry that has not begun
// yet adds nothing but may still add an empty segment to its day's bar.
//
// Refresh. secondEntryDate() is the date of the second entry of a chart
// timeline: the present moment plus 900 s, or, when that is later, one
// second after the end of the current day, week or month, in
// Calendar::current() with firstDayOfWeek as its first weekday (values
// outside 1...7 leave the calendar's own).
//
// Pure functions apart from reading the clock, the zone and the locale;
// thread-safe.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "Platform/Time/Date.h"
#include "SharedWidgets/Timelines/ChartBar.h"
#include "SharedWidgets/Timelines/WidgetDateRangeType.h"
#include "WidgetData/Records/ChartBarVO.h"
#include "WidgetData/Records/CurrentTimeEntryVO.h"

namespace kestrona {

inline constexpr double kChartRefreshInterval = 900;

bool barsAreCurrent(const std::vector<ChartBarVO>& bars, Date date);

std::vector<ChartBar> chartBarsFromRecords(const std::vector<ChartBarVO>& bars);

std::vector<ChartBar> mergingRunningEntry(std::vector<ChartBar> bars, const CurrentTimeEntryVO& entry,
                                          const std::function<double(double seconds)>& measure);

Date secondEntryDate(Date now, WidgetDateRangeType dateRangeType, std::int64_t firstDayOfWeek);

}  // namespace kestrona
