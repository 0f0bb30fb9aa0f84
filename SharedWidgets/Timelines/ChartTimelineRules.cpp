#include "SharedWidgets/Timelines/ChartTimelineRules.h"

#include <algorithm>
#include <limits>

#include "Platform/Time/Calendar.h"
#include "Platform/Time/DateInterval.h"
#include "SharedCore/Support/TimeText/DateExtensions.h"

namespace kestrona {

ChartBar ChartBar::fromRecord(const ChartBarVO& bar) {
  ChartBar result{.date = Date(bar.date), .segments = {}, .totalValue = bar.totalValue};
  result.segments.reserve(bar.segments.size());
  for (const ChartBarSegmentVO& segment : bar.segments) {
    result.segments.push_back(
        ChartBarSegment{.taskId = segment.taskId, .color = segment.taskColor.color(), .value = segment.value});
  }
  return result;
}

bool barsAreCurrent(const std::vector<ChartBarVO>& bars, Date date) {
  Date now = Date::now();
  Date start = bars.empty() ? now : Date(bars.front().date);
  Date reference = bars.empty() ? now : Date(bars.back().date);
  Date end = Calendar::current().dateByAdding(Calendar::Component::day, 1, reference).value_or(now);
  if (start > end) return false;
  return DateInterval(start, end).contains(date);
}

std::vector<ChartBar> chartBarsFromRecords(const std::vector<ChartBarVO>& bars) {
  std::vector<ChartBar> result;
  result.reserve(bars.size());
  std::transform(bars.begin(), bars.end(), std::back_inserter(result), ChartBar::fromRecord);
  return result;
}

std::vector<ChartBar> mergingRunningEntry(std::vector<ChartBar> bars, const CurrentTimeEntryVO& entry,
                                          const std::function<double(double seconds)>& measure) {
  if (!entry.begin) return bars;
  Date begin(*entry.begin);
  Date end = std::max(begin, Date::now());
  DateInterval running(begin, end);
  Calendar calendar = Calendar::current();
  for (ChartBar& bar : bars) {
    std::optional<DateInterval> day = calendar.dateIntervalOf(Calendar::Component::day, bar.date);
    if (!day) continue;
    std::optional<DateInterval> overlap = day->intersection(running);
    if (!overlap) continue;
    double value = measure(overlap->duration());
    auto segment = std::find_if(bar.segments.begin(), bar.segments.end(),
                                [&entry](const ChartBarSegment& candidate) { return candidate.taskId == entry.taskId; });
    if (segment != bar.segments.end()) {
      segment->value += value;
    } else {
      bar.segments.push_back(ChartBarSegment{.taskId = entry.taskId, .color = entry.taskColor.color(), .value = value});
    }
    bar.totalValue += value;
  }
  return bars;
}

Date secondEntryDate(Date now, WidgetDateRangeType dateRangeType, std::int64_t firstDayOfWeek) {
  Date refresh = now.addingTimeInterval(kChartRefreshInterval);
  Calendar calendar = Calendar::current();
  // The calendar ignores weekdays outside 1...7; a value beyond int must not
  // wrap into that range on the way.
  bool fitsInt = firstDayOfWeek >= std::numeric_limits<int>::min() && firstDayOfWeek <= std::numeric_limits<int>::max();
  calendar.setFirstWeekday(fitsInt ? static_cast<int>(firstDayOfWeek) : 0);
  DateForType endOfPeriod = DateForType::endOfDay;
  switch (dateRangeType) {
    case WidgetDateRangeType::daily: endOfPeriod = DateForType::endOfDay; break;
    case WidgetDateRangeType::weekly: endOfPeriod = DateForType::endOfWeek; break;
    case WidgetDateRangeType::monthly: endOfPeriod = DateForType::endOfMonth; break;
  }
  Date periodChange = dateFor(now, endOfPeriod, calendar).addingTimeInterval(1);
  return periodChange < refresh ? periodChange : refresh;
}

}  // namespace kestrona
