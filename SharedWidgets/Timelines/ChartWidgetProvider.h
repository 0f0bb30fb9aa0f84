// The timeline of a chart widget, weekly or monthly. The time-tracked chart
// (TimeTrackedWidgetProvider: bars in seconds) and the revenue chart
// (RevenueWidgetProvider: bars in money) are one template over their record
// and entry; they differ only where the two overloads below say.
//
// Each entry is made for a date from the chart file read anew: a file that
// can't be read or decoded gives the record's empty(); bars that are stale
// at that date (barsAreCurrent, ChartTimelineRules.h) are dropped and the
// rest of the record kept; then the running time entry is merged into the
// bars by runningEntryMeasure(): seconds for time tracked, seconds / 3600
// times the record's hourly rate for revenue (times 0 without one).
//
// placeholder() and getSnapshot() give the entry for the present moment, so
// a placeholder shows real data when there is a file. getTimeline() gives
// two entries, for now and for secondEntryDate() (at most 15 minutes later,
// exactly at the change of period when that comes first), reading the file
// for each, with the policy atEnd.
//
// A value; the operations are const, may run on any thread, and call their
// completion once before they return.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "Platform/Foundation/FatalError.h"
#include "Platform/WidgetHost/Timeline.h"
#include "SharedWidgets/Timelines/ChartTimelineRules.h"
#include "SharedWidgets/Timelines/RevenueWidgetEntry.h"
#include "SharedWidgets/Timelines/TimeTrackedWidgetEntry.h"
#include "SharedWidgets/Timelines/WidgetDateRangeType.h"
#include "WidgetData/Records/RevenueWidgetDataVO.h"
#include "WidgetData/Records/TimeTrackedWidgetDataVO.h"
#include "WidgetData/Records/WidgetDataReader.h"

namespace kestrona {

// The running entry's share of a bar, in the chart's unit, for seconds of it.
double runningEntryMeasure(const TimeTrackedWidgetDataVO& record, double seconds);
double runningEntryMeasure(const RevenueWidgetDataVO& record, double seconds);

// The entry of record at date with bars, the record's other fields copied.
TimeTrackedWidgetEntry chartEntry(const TimeTrackedWidgetDataVO& record, Date date, std::vector<ChartBar> bars);
RevenueWidgetEntry chartEntry(const RevenueWidgetDataVO& record, Date date, std::vector<ChartBar> bars);

template <typename Record, typename ChartEntry>
class ChartWidgetProvider {
 public:
  using Entry = ChartEntry;

  // widgetDataReader must not be null.
  ChartWidgetProvider(WidgetDateRangeType dateRangeType,
                      std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader)
      : dateRangeType_(dateRangeType), widgetDataReader_(std::move(widgetDataReader)) {
    precondition(widgetDataReader_ != nullptr, "A chart widget provider needs a reader");
  }

  WidgetDateRangeType dateRangeType() const noexcept { return dateRangeType_; }
  const std::shared_ptr<const WidgetDataReaderProtocol>& widgetDataReader() const noexcept {
    return widgetDataReader_;
  }

  // The entry of record at date, with no file read: staleness is not
  // checked here, the running entry is merged.
  static Entry entryFromRecord(const Record& record, Date date) {
    std::vector<ChartBar> bars = chartBarsFromRecords(record.bars);
    if (record.currentTimeEntry) {
      bars = mergingRunningEntry(std::move(bars), *record.currentTimeEntry,
                                 [&record](double seconds) { return runningEntryMeasure(record, seconds); });
    }
    return chartEntry(record, date, std::move(bars));
  }

  // The entry at date, from the file as described above.
  Entry entryFor(Date date) const {
    WidgetDataResult<Record> read = widgetDataReader_->template readCodableData<Record>();
    if (!read.isSuccess()) return entryFromRecord(Record::empty(), date);
    Record record = read.value();
    if (!barsAreCurrent(record.bars, date)) record.bars.clear();
    return entryFromRecord(record, date);
  }

  Entry placeholder(const TimelineProviderContext& /*context*/) const { return entryFor(Date::now()); }

  void getSnapshot(const TimelineProviderContext& /*context*/, const std::function<void(Entry)>& completion) const {
    completion(entryFor(Date::now()));
  }

  void getTimeline(const TimelineProviderContext& /*context*/,
                   const std::function<void(Timeline<Entry>)>& completion) const {
    const Date now = Date::now();
    Entry first = entryFor(now);
    Entry second = entryFor(secondEntryDate(now, dateRangeType_, first.firstDayOfWeek));
    Timeline<Entry> timeline{.entries = {}, .policy = TimelineReloadPolicy::atEnd()};
    timeline.entries.push_back(std::move(first));
    timeline.entries.push_back(std::move(second));
    completion(std::move(timeline));
  }

 private:
  WidgetDateRangeType dateRangeType_;
  std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader_;
};

using TimeTrackedWidgetProvider = ChartWidgetProvider<TimeTrackedWidgetDataVO, TimeTrackedWidgetEntry>;
using RevenueWidgetProvider = ChartWidgetProvider<RevenueWidgetDataVO, RevenueWidgetEntry>;

extern template class ChartWidgetProvider<TimeTrackedWidgetDataVO, TimeTrackedWidgetEntry>;
extern template class ChartWidgetProvider<RevenueWidgetDataVO, RevenueWidgetEntry>;

}  // namespace kestrona
