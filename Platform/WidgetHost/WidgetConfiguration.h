// What a widget tells the host about itself: its kind, gallery texts,
// families, and its timeline provider behind a type-erased front.
//
// The host keeps widgets of every kind in one list, so the entry type of a
// provider is erased: AnyTimelineEntry carries an entry's date and the entry
// itself as a std::any, and as<Entry>() gives it back to code that knows the
// type (the views, the command line). AnyTimeline is a Timeline of them.
//
// A configuration is made by staticConfiguration(kind, provider): a widget
// with no options a user can set. The provider is copied into the
// configuration and shared by its copies; it must be callable from the host's
// thread. The optional settings return a changed copy, so a configuration
// reads as one expression. Every operation forwards to the provider; the
// completion is called when the provider calls its own, which may be later,
// from any thread.
//
// A value: copies share the provider, which is immutable. The operations
// may be called from any one thread at a time per provider.
#pragma once

#include <any>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/WidgetHost/Timeline.h"

namespace kestrona {

class AnyTimelineEntry {
 public:
  template <TimelineEntry Entry>
  explicit AnyTimelineEntry(Entry entry) : date_(entry.date), value_(std::move(entry)) {}

  Date date() const noexcept { return date_; }
  const std::any& value() const noexcept { return value_; }
  // The entry as Entry, or null when it is of another type.
  template <TimelineEntry Entry>
  const Entry* as() const noexcept {
    return std::any_cast<Entry>(&value_);
  }

 private:
  Date date_;
  std::any value_;
};

struct AnyTimeline {
  std::vector<AnyTimelineEntry> entries;
  TimelineReloadPolicy policy = TimelineReloadPolicy::atEnd();
};

class WidgetConfiguration {
 public:
  using SnapshotCompletion = std::function<void(AnyTimelineEntry)>;
  using TimelineCompletion = std::function<void(AnyTimeline)>;

  template <TimelineProvider Provider>
  static WidgetConfiguration staticConfiguration(std::string kind, Provider provider);

  const std::string& kind() const noexcept { return kind_; }
  const std::string& displayName() const noexcept { return displayName_; }
  const std::string& description() const noexcept { return description_; }
  // In the order the widget offers them; never empty.
  const std::vector<WidgetFamily>& supportedFamilies() const noexcept { return supportedFamilies_; }
  bool isSupported(WidgetFamily family) const;
  // Whether the widget draws to its edges instead of inside the margins the
  // desktop would add.
  bool contentMarginsDisabled() const noexcept { return contentMarginsDisabled_; }

  WidgetConfiguration configurationDisplayName(std::string name) const;
  WidgetConfiguration withDescription(std::string text) const;
  // families must not be empty.
  WidgetConfiguration withSupportedFamilies(std::vector<WidgetFamily> families) const;
  WidgetConfiguration withContentMarginsDisabled() const;

  AnyTimelineEntry placeholder(const TimelineProviderContext& context) const;
  void getSnapshot(const TimelineProviderContext& context, const SnapshotCompletion& completion) const;
  void getTimeline(const TimelineProviderContext& context, const TimelineCompletion& completion) const;

 private:
  struct ErasedProvider {
    std::function<AnyTimelineEntry(const TimelineProviderContext&)> placeholder;
    std::function<void(const TimelineProviderContext&, const SnapshotCompletion&)> getSnapshot;
    std::function<void(const TimelineProviderContext&, const TimelineCompletion&)> getTimeline;
  };

  WidgetConfiguration(std::string kind, std::shared_ptr<const ErasedProvider> provider);

  std::string kind_;
  std::string displayName_;
  std::string description_;
  std::vector<WidgetFamily> supportedFamilies_;
  bool contentMarginsDisabled_ = false;
  std::shared_ptr<const ErasedProvider> provider_;
};

template <TimelineProvider Provider>
WidgetConfiguration WidgetConfiguration::staticConfiguration(std::string kind, Provider provider) {
  using Entry = typename Provider::Entry;
  auto shared = std::make_shared<const Provider>(std::move(provider));
  auto erased = std::make_shared<ErasedProvider>();
  erased->placeholder = [shared](const TimelineProviderContext& context) {
    return AnyTimelineEntry(shared->placeholder(context));
  };
  erased->getSnapshot = [shared](const TimelineProviderContext& context, const SnapshotCompletion& completion) {
    shared->getSnapshot(context, [completion](Entry entry) { completion(AnyTimelineEntry(std::move(entry))); });
  };
  erased->getTimeline = [shared](const TimelineProviderContext& context, const TimelineCompletion& completion) {
    shared->getTimeline(context, [completion](Timeline<Entry> timeline) {
      AnyTimeline erasedTimeline{.entries = {}, .policy = timeline.policy};
      erasedTimeline.entries.reserve(timeline.entries.size());
      for (Entry& entry : timeline.entries) erasedTimeline.entries.emplace_back(std::move(entry));
      completion(std::move(erasedTimeline));
    });
  };
  return WidgetConfiguration(std::move(kind), std::move(erased));
}

}  // namespace kestrona
