// Timelines: what a widget shows from which moment on, and when to ask again.
//
// A timeline entry is any plain value with a field `date`, the moment from
// which it is valid (the TimelineEntry concept). A Timeline is a list of
// entries in date order and a reload policy. The host shows, at each
// moment, the last entry whose date has come, or the first entry while none
// has.
//
// A timeline provider (the TimelineProvider concept) answers three
// questions for a widget placed in a context:
//   placeholder(context)            an entry to show at once, without waiting;
//   getSnapshot(context, completion) one entry for a quick look;
//   getTimeline(context, completion) the entries from now on, and the policy.
// The completions are called exactly once; providers of this system call
// them before they return. The host calls a provider on its own thread and
// lets it block on file reads.
//
// Plain values and a concept; nothing here has state or threads.
#pragma once

#include <concepts>
#include <functional>
#include <vector>

#include "Platform/Time/Date.h"
#include "Platform/WidgetHost/TimelineReloadPolicy.h"
#include "Platform/WidgetHost/WidgetFamily.h"

namespace kestrona {

// Where a widget is asked to draw: its family, its size in points, and
// whether it is shown in the gallery rather than on the desktop.
struct TimelineProviderContext {
  WidgetFamily family = WidgetFamily::systemSmall;
  double displayWidth = 0;
  double displayHeight = 0;
  bool isPreview = false;

  friend bool operator==(const TimelineProviderContext&, const TimelineProviderContext&) = default;
};

template <typename Entry>
concept TimelineEntry = std::copyable<Entry> && requires(const Entry& entry) {
  { entry.date } -> std::convertible_to<Date>;
};

template <TimelineEntry Entry>
struct Timeline {
  std::vector<Entry> entries;
  TimelineReloadPolicy policy = TimelineReloadPolicy::atEnd();
};

template <typename Provider>
concept TimelineProvider = requires(const Provider& provider, const TimelineProviderContext& context) {
  typename Provider::Entry;
  requires TimelineEntry<typename Provider::Entry>;
  { provider.placeholder(context) } -> std::same_as<typename Provider::Entry>;
  provider.getSnapshot(context, std::function<void(typename Provider::Entry)>());
  provider.getTimeline(context, std::function<void(Timeline<typename Provider::Entry>)>());
};

}  // namespace kestrona
