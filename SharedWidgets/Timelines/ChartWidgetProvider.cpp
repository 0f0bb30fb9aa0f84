#include "SharedWidgets/Timelines/ChartWidgetProvider.h"

namespace kestrona {

double runningEntryMeasure(const TimeTrackedWidgetDataVO& /*record*/, double seconds) { return seconds; }

double runningEntryMeasure(const RevenueWidgetDataVO& record, double seconds) {
  // The rate is per hour; without one the running entry earns nothing.
  return seconds / 3600.0 * record.currentTimeEntryHourRate.value_or(0);
}

TimeTrackedWidgetEntry chartEntry(const TimeTrackedWidgetDataVO& record, Date date, std::vector<ChartBar> bars) {
  return TimeTrackedWidgetEntry{.date = date, .chartBars = std::move(bars), .firstDayOfWeek = record.firstDayOfWeek};
}

RevenueWidgetEntry chartEntry(const RevenueWidgetDataVO& record, Date date, std::vector<ChartBar> bars) {
  return RevenueWidgetEntry{.date = date,
                            .chartBars = std::move(bars),
                            .firstDayOfWeek = record.firstDayOfWeek,
                            .currencyLocalIdentifier = record.currencyLocalIdentifier};
}

template class ChartWidgetProvider<TimeTrackedWidgetDataVO, TimeTrackedWidgetEntry>;
template class ChartWidgetProvider<RevenueWidgetDataVO, RevenueWidgetEntry>;

}  // namespace kestrona
