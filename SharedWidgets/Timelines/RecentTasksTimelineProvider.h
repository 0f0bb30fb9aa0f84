// The timeline of the recent tasks widget.
//
// Snapshots and timelines read the recent tasks file anew and make one
// entry dated now (Date::now()) with its tasks, an empty list included.
// When the file can't be read or decoded the entry is the sample entry.
//
// The sample entry is made once per process, on first use, under a
// once-only guard, and dated at that moment: eight tasks ("Concept",
// "Sketching", ...) whose identifiers are their names, with the dark
// variants of their colour sets converted from Display P3 to the widget
// files' colours; "Sketching" runs, begun 8334 s before the sample was
// made. The names are plain literals, not localised. placeholder() is the
// sample entry.
//
// The timeline holds the one entry. Its policy: after(begin + 360005 s),
// one hundred hours and five seconds after the begin of the first task in
// list order that runs; never when none runs.
//
// A value holding its reader; the operations are const, may run on any
// thread, and call their completion once before they return.
#pragma once

#include <functional>
#include <memory>

#include "Platform/WidgetHost/Timeline.h"
#include "SharedWidgets/Timelines/RecentTasksEntry.h"
#include "WidgetData/Records/WidgetDataReader.h"

namespace kestrona {

class RecentTasksTimelineProvider {
 public:
  using Entry = RecentTasksEntry;

  // widgetDataReader must not be null.
  explicit RecentTasksTimelineProvider(std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader);

  const std::shared_ptr<const WidgetDataReaderProtocol>& widgetDataReader() const noexcept {
    return widgetDataReader_;
  }

  // The process's one sample entry.
  static const RecentTasksEntry& sampleEntry();

  RecentTasksEntry placeholder(const TimelineProviderContext& context) const;
  void getSnapshot(const TimelineProviderContext& context, const std::function<void(RecentTasksEntry)>& completion) const;
  void getTimeline(const TimelineProviderContext& context,
                   const std::function<void(Timeline<RecentTasksEntry>)>& completion) const;

 private:
  RecentTasksEntry currentEntry() const;

  std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader_;
};

}  // namespace kestrona
