#include "SharedWidgets/Timelines/TimeTrackedWidgetProvider.h"

#include "Platform/Foundation/FatalError.h"
#include "SharedWidgets/Timelines/ChartTimelineRules.h"

namespace kestrona {

TimeTrackedWidgetProvider::TimeTrackedWidgetProvider(WidgetDateRangeType dateRangeType,
                                                     std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader)
    : dateRangeType_(dateRangeType), widgetDataReader_(std::move(widgetDataReader)) {
  precondition(widgetDataReader_ != nullptr, "TimeTrackedWidgetProvider needs a reader");
}

TimeTrackedWidgetEntry TimeTrackedWidgetProvider::entryFromRecord(const TimeTrackedWidgetDataVO& record, Date date) {
  std::vector<ChartBar> bars = chartBarsFromRecords(record.bars);
  if (record.currentTimeEntry) {
    bars = mergingRunningEntry(std::move(bars), *record.currentTimeEntry, [](double seconds) { return seconds; });
  }
  return TimeTrackedWidgetEntry{.date = date, .chartBars = std::move(bars), .firstDayOfWeek = record.firstDayOfWeek};
}

TimeTrackedWidgetEntry TimeTrackedWidgetProvider::entryFor(Date date) const {
  return chartEntryFor<TimeTrackedWidgetDataVO>(*widgetDataReader_, date, &TimeTrackedWidgetProvider::entryFromRecord);
}

TimeTrackedWidgetEntry TimeTrackedWidgetProvider::placeholder(const TimelineProviderContext& /*context*/) const {
  return entryFor(Date::now());
}

void TimeTrackedWidgetProvider::getSnapshot(const TimelineProviderContext& /*context*/,
                                            const std::function<void(TimeTrackedWidgetEntry)>& completion) const {
  completion(entryFor(Date::now()));
}

void TimeTrackedWidgetProvider::getTimeline(const TimelineProviderContext& /*context*/,
                                            const std::function<void(Timeline<TimeTrackedWidgetEntry>)>& completion) const {
  completion(chartTimeline(Date::now(), dateRangeType_, [this](Date date) { return entryFor(date); }));
}

}  // namespace kestrona
