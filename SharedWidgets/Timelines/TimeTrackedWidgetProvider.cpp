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
  WidgetDataResult<TimeTrackedWidgetDataVO> read = widgetDataReader_->readCodableData<TimeTrackedWidgetDataVO>();
  if (!read.isSuccess()) return entryFromRecord(TimeTrackedWidgetDataVO::empty(), date);
  TimeTrackedWidgetDataVO record = read.value();
  if (!barsAreCurrent(record.bars, date)) record.bars.clear();
  return entryFromRecord(record, date);
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
  Date now = Date::now();
  TimeTrackedWidgetEntry first = entryFor(now);
  TimeTrackedWidgetEntry second = entryFor(secondEntryDate(now, dateRangeType_, first.firstDayOfWeek));
  Timeline<TimeTrackedWidgetEntry> timeline{.entries = {}, .policy = TimelineReloadPolicy::atEnd()};
  timeline.entries.push_back(std::move(first));
  timeline.entries.push_back(std::move(second));
  completion(std::move(timeline));
}

}  // namespace kestrona
