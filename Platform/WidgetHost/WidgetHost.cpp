#include "Platform/WidgetHost/WidgetHost.h"

#include <algorithm>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {
namespace {

// Nominal sizes in points, as the desktop gives them; providers of this
// system do not look at them.
struct FamilySize {
  double width;
  double height;
};

FamilySize sizeOf(WidgetFamily family) {
  switch (family) {
    case WidgetFamily::systemSmall: return {170, 170};
    case WidgetFamily::systemMedium: return {364, 170};
    case WidgetFamily::systemLarge: return {364, 382};
  }
  return {0, 0};
}

}  // namespace

WidgetHost::WidgetHost(std::vector<WidgetConfiguration> widgets, Clock& clock,
                       std::shared_ptr<FileChangeMonitor> monitor, WidgetHostOptions options)
    : widgets_(std::move(widgets)), clock_(clock), monitor_(std::move(monitor)), options_(options) {
  for (std::size_t index = 0; index < widgets_.size(); ++index) {
    for (WidgetFamily family : widgets_[index].supportedFamilies()) {
      Instance instance;
      instance.widget = index;
      instance.family = family;
      instances_.push_back(std::move(instance));
    }
  }
}

void WidgetHost::watchDataFile(std::string_view kind, const std::filesystem::path& file) {
  dataFiles_.emplace_back(file, std::string(kind));
  if (monitor_) monitor_->watch(file);
}

TimelineProviderContext WidgetHost::contextFor(const Instance& instance) const {
  FamilySize size = sizeOf(instance.family);
  return TimelineProviderContext{
      .family = instance.family, .displayWidth = size.width, .displayHeight = size.height, .isPreview = false};
}

void WidgetHost::start() {
  precondition(!started_, "WidgetHost started twice");
  started_ = true;
  for (Instance& instance : instances_) {
    instance.current = widgets_[instance.widget].placeholder(contextFor(instance));
    notify(WidgetHostEvent::Kind::entryChanged, instance, WidgetHostEvent::Reason::start);
    reload(instance, WidgetHostEvent::Reason::start);
  }
}

void WidgetHost::update() {
  precondition(started_, "WidgetHost updated before start()");
  if (monitor_) {
    for (const std::filesystem::path& file : monitor_->takeChangedFiles()) {
      for (const auto& [watched, kind] : dataFiles_) {
        if (watched != file) continue;
        for (Instance& instance : instances_) {
          if (widgets_[instance.widget].kind() == kind) instance.reloadRequested = true;
        }
      }
    }
  }
  Date now = clock_.now();
  for (Instance& instance : instances_) {
    if (instance.reloadRequested) {
      reload(instance, WidgetHostEvent::Reason::fileChanged);
    } else if (instance.reloadDate && *instance.reloadDate <= now) {
      reload(instance, WidgetHostEvent::Reason::policy);
    } else {
      selectEntry(instance, WidgetHostEvent::Reason::policy);
    }
  }
}

std::optional<Date> WidgetHost::nextUpdateDate() const {
  std::optional<Date> next;
  auto consider = [&next](Date date) {
    if (!next || date < *next) next = date;
  };
  for (const Instance& instance : instances_) {
    if (instance.reloadDate) consider(*instance.reloadDate);
    if (instance.timeline && instance.entryIndex + 1 < instance.timeline->entries.size()) {
      // Entries in date order: the next one after the current is the next switch.
      for (std::size_t index = instance.entryIndex + 1; index < instance.timeline->entries.size(); ++index) {
        Date date = instance.timeline->entries[index].date();
        if (date > clock_.now()) {
          consider(date);
          break;
        }
      }
    }
  }
  return next;
}

void WidgetHost::reloadTimelines(std::string_view kind) {
  for (Instance& instance : instances_) {
    if (widgets_[instance.widget].kind() == kind) reload(instance, WidgetHostEvent::Reason::requested);
  }
}

void WidgetHost::reloadAllTimelines() {
  for (Instance& instance : instances_) reload(instance, WidgetHostEvent::Reason::requested);
}

void WidgetHost::reload(Instance& instance, WidgetHostEvent::Reason reason) {
  instance.reloadRequested = false;
  std::optional<AnyTimeline> received;
  widgets_[instance.widget].getTimeline(contextFor(instance),
                                        [&received](AnyTimeline timeline) { received = std::move(timeline); });
  Date now = clock_.now();
  instance.lastReload = now;
  instance.lastReason = reason;
  // A provider that gave no timeline, or an empty one, leaves the widget as
  // it was; it is asked again by the policy it gave, or after the minimum
  // interval.
  TimelineReloadPolicy policy = received ? received->policy : TimelineReloadPolicy::atEnd();
  if (received && !received->entries.empty()) {
    std::stable_sort(received->entries.begin(), received->entries.end(),
                     [](const AnyTimelineEntry& a, const AnyTimelineEntry& b) { return a.date() < b.date(); });
    instance.timeline = std::move(*received);
    instance.entryIndex = 0;
    instance.current.reset();
  }
  Date earliest = now.addingTimeInterval(options_.minimumReloadInterval);
  switch (policy.kind()) {
    case TimelineReloadPolicy::Kind::atEnd: {
      Date end = instance.timeline && !instance.timeline->entries.empty() ? instance.timeline->entries.back().date() : now;
      instance.reloadDate = std::max(end, earliest);
      break;
    }
    case TimelineReloadPolicy::Kind::after: instance.reloadDate = std::max(*policy.date(), earliest); break;
    case TimelineReloadPolicy::Kind::never: instance.reloadDate.reset(); break;
  }
  notify(WidgetHostEvent::Kind::timelineReloaded, instance, reason);
  selectEntry(instance, reason);
}

void WidgetHost::selectEntry(Instance& instance, WidgetHostEvent::Reason reason) {
  if (!instance.timeline || instance.timeline->entries.empty()) return;
  const std::vector<AnyTimelineEntry>& entries = instance.timeline->entries;
  Date now = clock_.now();
  std::size_t index = 0;
  for (std::size_t candidate = 0; candidate < entries.size(); ++candidate) {
    if (entries[candidate].date() <= now) index = candidate;
  }
  if (instance.current && index == instance.entryIndex) return;
  instance.entryIndex = index;
  instance.current = entries[index];
  notify(WidgetHostEvent::Kind::entryChanged, instance, reason);
}

void WidgetHost::notify(WidgetHostEvent::Kind kind, const Instance& instance, WidgetHostEvent::Reason reason) {
  if (!observer_) return;
  observer_(WidgetHostEvent{.kind = kind,
                            .widgetKind = widgets_[instance.widget].kind(),
                            .family = instance.family,
                            .date = clock_.now(),
                            .reason = reason});
}

const WidgetHost::Instance* WidgetHost::find(std::string_view kind, WidgetFamily family) const {
  for (const Instance& instance : instances_) {
    if (instance.family == family && widgets_[instance.widget].kind() == kind) return &instance;
  }
  return nullptr;
}

const AnyTimelineEntry* WidgetHost::currentEntry(std::string_view kind, WidgetFamily family) const {
  const Instance* instance = find(kind, family);
  return instance && instance->current ? &*instance->current : nullptr;
}

const AnyTimeline* WidgetHost::timeline(std::string_view kind, WidgetFamily family) const {
  const Instance* instance = find(kind, family);
  return instance && instance->timeline ? &*instance->timeline : nullptr;
}

std::optional<Date> WidgetHost::reloadDate(std::string_view kind, WidgetFamily family) const {
  const Instance* instance = find(kind, family);
  return instance ? instance->reloadDate : std::nullopt;
}

}  // namespace kestrona
