// The timeline of a revenue chart widget, weekly or monthly.
//
// Each entry is made for a date from the chart file read anew: a file that
// can't be read or decoded gives the empty record; bars that are stale at
// that date (barsAreCurrent, ChartTimelineRules.h) are dropped and the
// rest of the record kept; then the running time entry is merged into the
// bars in money: seconds / 3600 times the record's hourly rate, or times 0 without one.
//
// placeholder() and getSnapshot() give the entry for the present moment, so
// a placeholder shows real data when there is a file. getTimeline() gives
// two entries, for now and for secondEntryDate() (at most 15 minutes later,
// exactly at the change of period when that comes first), with the policy
// atEnd.
//
// A value; the operations are const, may run on any thread, and call their
// completion once before they return.
#pragma once

#include <functional>
#include <memory>

#include "Platform/WidgetHost/Timeline.h"
#include "SharedWidgets/Timelines/RevenueWidgetEntry.h"
#include "SharedWidgets/Timelines/WidgetDateRangeType.h"
#include "WidgetData/Records/RevenueWidgetDataVO.h"
#include "WidgetData/Records/WidgetDataReader.h"

namespace kestrona {

class RevenueWidgetProvider {
 public:
  using Entry = RevenueWidgetEntry;

  // widgetDataReader must not be null.
  RevenueWidgetProvider(WidgetDateRangeType dateRangeType, std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader);

  WidgetDateRangeType dateRangeType() const noexcept { return dateRangeType_; }
  const std::shared_ptr<const WidgetDataReaderProtocol>& widgetDataReader() const noexcept {
    return widgetDataReader_;
  }

  // The entry of record at date, with no file read: staleness is not
  // checked here, the running entry is merged.
  static RevenueWidgetEntry entryFromRecord(const RevenueWidgetDataVO& record, Date date);
  // The entry at date, from the file as described above.
  RevenueWidgetEntry entryFor(Date date) const;

  RevenueWidgetEntry placeholder(const TimelineProviderContext& context) const;
  void getSnapshot(const TimelineProviderContext& context, const std::function<void(RevenueWidgetEntry)>& completion) const;
  void getTimeline(const TimelineProviderContext& context,
                   const std::function<void(Timeline<RevenueWidgetEntry>)>& completion) const;

 private:
  WidgetDateRangeType dateRangeType_;
  std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader_;
};

}  // namespace kestrona
