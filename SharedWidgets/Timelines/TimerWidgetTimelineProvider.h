// The timeline of the timer widget.
//
// The provider reads the timer file at every snapshot and timeline and
// makes one entry of it, dated at the present moment (Date::now()). When
// the file can't be read or decoded, whatever the reason, the entry is the
// placeholder entry as it stands, with the date at which the provider was
// made; nothing is logged.
//
// The placeholder entry is made once, when the provider is made: task "123"
// named by the localised "widget.timer.placeholderTask" ("Task"), white
// colours, no folder, a start button opacity of 0.5, and begin and end
// parsed from fixed texts by a date formatter at its default settings. Such
// a formatter has no format and reads no date, so both stay absent and the
// placeholder shows a task with no time entry; that is deliberate and must
// not be "fixed" with an explicit format.
//
// The timeline holds the one entry. Its policy: after(begin + 3600 s) when
// the entry has a begin, whether or not it still runs and even when that
// moment has passed; otherwise never.
//
// A value holding its reader and the placeholder entry; the operations are
// const and may run on any thread, and they call their completion once
// before they return.
#pragma once

#include <functional>
#include <memory>

#include "Platform/WidgetHost/Timeline.h"
#include "SharedWidgets/Timelines/TimerWidgetEntry.h"
#include "WidgetData/Records/WidgetDataReader.h"

namespace kestrona {

class TimerWidgetTimelineProvider {
 public:
  using Entry = TimerWidgetEntry;

  // widgetDataReader must not be null.
  explicit TimerWidgetTimelineProvider(std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader);

  const std::shared_ptr<const WidgetDataReaderProtocol>& widgetDataReader() const noexcept {
    return widgetDataReader_;
  }
  const TimerWidgetEntry& placeholderEntry() const noexcept { return placeholderEntry_; }

  TimerWidgetEntry placeholder(const TimelineProviderContext& context) const;
  void getSnapshot(const TimelineProviderContext& context, const std::function<void(TimerWidgetEntry)>& completion) const;
  void getTimeline(const TimelineProviderContext& context,
                   const std::function<void(Timeline<TimerWidgetEntry>)>& completion) const;

 private:
  TimerWidgetEntry currentEntry() const;

  std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader_;
  TimerWidgetEntry placeholderEntry_;
};

}  // namespace kestrona
