// The widget host: what the desktop is to widgets on a platform that has no
// widget host of its own.
//
// A host is made with the configurations of a widget bundle and places one
// instance of every widget in every family it supports. start() gives each
// instance its placeholder and then asks for its timeline. From then on the
// host keeps, for each instance, the timeline it was given, the current
// entry (the last one whose date has come, or the first while none has), and
// the moment of its next reload:
//
//   atEnd        the date of the timeline's last entry;
//   after(date)  date;
//   never        none: only a change of its data file or reloadTimelines()
//                reloads it.
//
// A reload by policy never comes sooner than minimumReloadInterval after
// the instance's previous reload, so that a policy whose moment has already
// passed (a timer entry that ended hours ago) does not make the host ask
// again and again; its entries still switch at their own dates. A data file
// that changes, or reloadTimelines(), reloads at once.
//
// The host does nothing by itself. update() does what is due at the
// clock's present moment: it takes the changed files from the monitor,
// reloads the instances whose kind's file changed or whose reload moment has
// come, and moves every instance to its current entry. nextUpdateDate() says
// when update() must run next; a loop (the widget process's, or a test that
// moves a ManualClock) sleeps until then or until the monitor has news. The
// observer hears every reload and every change of current entry, in order.
//
// Providers are called synchronously, on the caller's thread, and may block
// on file reads. The clock and the monitor must outlive the host.
//
// Threading: a host and everything it calls run on one thread, the one that
// calls start() and update(); it is neither copied nor moved.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Time/Clock.h"
#include "Platform/WidgetHost/FileChangeMonitor.h"
#include "Platform/WidgetHost/WidgetConfiguration.h"

namespace kestrona {

struct WidgetHostOptions {
  double minimumReloadInterval = 300;
};

struct WidgetHostEvent {
  enum class Kind {
    // The instance got a new timeline.
    timelineReloaded,
    // The instance shows another entry than before.
    entryChanged,
  };
  enum class Reason { start, policy, fileChanged, requested };

  Kind kind;
  std::string widgetKind;
  WidgetFamily family;
  // The host's present moment when it happened.
  Date date;
  // Why the timeline was reloaded; for entryChanged, the reason of the
  // reload that brought the entry, or policy when time moved on.
  Reason reason;

  friend bool operator==(const WidgetHostEvent&, const WidgetHostEvent&) = default;
};

class WidgetHost {
 public:
  using Observer = std::function<void(const WidgetHostEvent&)>;

  // monitor may be null: then only time and reloadTimelines() reload.
  WidgetHost(std::vector<WidgetConfiguration> widgets, Clock& clock, std::shared_ptr<FileChangeMonitor> monitor,
             WidgetHostOptions options = {});
  WidgetHost(const WidgetHost&) = delete;
  WidgetHost& operator=(const WidgetHost&) = delete;

  void setObserver(Observer observer) { observer_ = std::move(observer); }
  // Reloads the widgets of kind whenever file changes. Before start().
  void watchDataFile(std::string_view kind, const std::filesystem::path& file);

  void start();
  void update();
  // When update() must run next; none while no reload and no entry is due.
  std::optional<Date> nextUpdateDate() const;

  // Reloads every instance of kind at once, as when the application asks.
  void reloadTimelines(std::string_view kind);
  void reloadAllTimelines();

  const std::vector<WidgetConfiguration>& widgets() const noexcept { return widgets_; }
  // Null for an instance the host doesn't have, or before start().
  const AnyTimelineEntry* currentEntry(std::string_view kind, WidgetFamily family) const;
  const AnyTimeline* timeline(std::string_view kind, WidgetFamily family) const;
  // The instance's next reload by policy; none when its policy is never.
  std::optional<Date> reloadDate(std::string_view kind, WidgetFamily family) const;

 private:
  struct Instance {
    std::size_t widget = 0;
    WidgetFamily family = WidgetFamily::systemSmall;
    std::optional<AnyTimeline> timeline;
    std::size_t entryIndex = 0;
    std::optional<AnyTimelineEntry> current;
    std::optional<Date> reloadDate;
    std::optional<Date> lastReload;
    bool reloadRequested = false;
    WidgetHostEvent::Reason lastReason = WidgetHostEvent::Reason::start;
  };

  const Instance* find(std::string_view kind, WidgetFamily family) const;
  void reload(Instance& instance, WidgetHostEvent::Reason reason);
  // Moves instance to the entry current at now; tells the observer on a change.
  void selectEntry(Instance& instance, WidgetHostEvent::Reason reason);
  void notify(WidgetHostEvent::Kind kind, const Instance& instance, WidgetHostEvent::Reason reason);
  TimelineProviderContext contextFor(const Instance& instance) const;

  std::vector<WidgetConfiguration> widgets_;
  Clock& clock_;
  std::shared_ptr<FileChangeMonitor> monitor_;
  WidgetHostOptions options_;
  Observer observer_;
  std::vector<Instance> instances_;
  std::vector<std::pair<std::filesystem::path, std::string>> dataFiles_;
  bool started_ = false;
};

}  // namespace kestrona
