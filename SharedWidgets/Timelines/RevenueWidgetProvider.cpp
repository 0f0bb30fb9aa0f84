#include "SharedWidgets/Timelines/RevenueWidgetProvider.h"

#include "Platform/Foundation/FatalError.h"
#include "SharedWidgets/Timelines/ChartTimelineRules.h"

namespace kestrona {

RevenueWidgetProvider::RevenueWidgetProvider(WidgetDateRangeType dateRangeType,
                                                     std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader)
    : dateRangeType_(dateRangeType), widgetDataReader_(std::move(widgetDataReader)) {
  precondition(widgetDataReader_ != nullptr, "RevenueWidgetProvider needs a reader");
}

RevenueWidgetEntry RevenueWidgetProvider::entryFromRecord(const RevenueWidgetDataVO& record, Date date) {
  std::vector<ChartBar> bars = chartBarsFromRecords(record.bars);
  if (record.currentTimeEntry) {
    // The rate is per hour; without one the running entry earns nothing.
    double hourRate = record.currentTimeEntryHourRate.value_or(0);
    bars = mergingRunningEntry(std::move(bars), *record.currentTimeEntry,
                               [hourRate](double seconds) { return seconds / 3600.0 * hourRate; });
  }
  return RevenueWidgetEntry{.date = date,
                            .chartBars = std::move(bars),
                            .firstDayOfWeek = record.firstDayOfWeek,
                            .currencyLocalIdentifier = record.currencyLocalIdentifier};
}

RevenueWidgetEntry RevenueWidgetProvider::entryFor(Date date) const {
  return chartEntryFor<RevenueWidgetDataVO>(*widgetDataReader_, date, &RevenueWidgetProvider::entryFromRecord);
}

RevenueWidgetEntry RevenueWidgetProvider::placeholder(const TimelineProviderContext& /*context*/) const {
  return entryFor(Date::now());
}

void RevenueWidgetProvider::getSnapshot(const TimelineProviderContext& /*context*/,
                                            const std::function<void(RevenueWidgetEntry)>& completion) const {
  completion(entryFor(Date::now()));
}

void RevenueWidgetProvider::getTimeline(const TimelineProviderContext& /*context*/,
                                            const std::function<void(Timeline<RevenueWidgetEntry>)>& completion) const {
  completion(chartTimeline(Date::now(), dateRangeType_, [this](Date date) { return entryFor(date); }));
}

}  // namespace kestrona
