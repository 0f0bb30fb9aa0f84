#include <map>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/WidgetHost/WidgetHost.h"

namespace kestrona {
namespace {

constexpr double kStart = 1773219600;

struct NumberEntry {
  Date date;
  int number = 0;
};

// A provider whose next timeline the test sets; it counts the timelines it gave.
struct Script {
  Timeline<NumberEntry> next{.entries = {}, .policy = TimelineReloadPolicy::never()};
  int timelines = 0;
};

struct ScriptedProvider {
  using Entry = NumberEntry;
  std::shared_ptr<Script> script;

  NumberEntry placeholder(const TimelineProviderContext&) const { return NumberEntry{Date(), -1}; }
  void getSnapshot(const TimelineProviderContext&, const std::function<void(NumberEntry)>& completion) const {
    completion(script->next.entries.front());
  }
  void getTimeline(const TimelineProviderContext&, const std::function<void(Timeline<NumberEntry>)>& completion) const {
    ++script->timelines;
    completion(script->next);
  }
};

class ManualFileChangeMonitor final : public FileChangeMonitor {
 public:
  void watch(const std::filesystem::path& file) override { watched.push_back(file); }
  std::vector<std::filesystem::path> takeChangedFiles() override { return std::exchange(changed, {}); }

  std::vector<std::filesystem::path> watched;
  std::vector<std::filesystem::path> changed;
};

NumberEntry at(double offset, int number) { return NumberEntry{Date(kStart + offset), number}; }

class WidgetHostTest : public ::testing::Test {
 protected:
  WidgetHostTest() {
    std::vector<WidgetConfiguration> widgets = {
        WidgetConfiguration::staticConfiguration("clock", ScriptedProvider{clockScript})
            .withSupportedFamilies({WidgetFamily::systemSmall, WidgetFamily::systemMedium}),
        WidgetConfiguration::staticConfiguration("notes", ScriptedProvider{notesScript})
            .withSupportedFamilies({WidgetFamily::systemLarge}),
    };
    host = std::make_unique<WidgetHost>(std::move(widgets), clock, monitor, WidgetHostOptions{.minimumReloadInterval = 60});
    host->setObserver([this](const WidgetHostEvent& event) { events.push_back(event); });
  }

  int shown(std::string_view kind, WidgetFamily family) const {
    const AnyTimelineEntry* entry = host->currentEntry(kind, family);
    return entry ? entry->as<NumberEntry>()->number : -100;
  }

  // Moves the clock to the host's next update, as the process's loop does.
  void runToNextUpdate() {
    std::optional<Date> next = host->nextUpdateDate();
    ASSERT_TRUE(next.has_value());
    clock.set(*next);
    host->update();
  }

  ManualClock clock{Date(kStart)};
  std::shared_ptr<Script> clockScript = std::make_shared<Script>();
  std::shared_ptr<Script> notesScript = std::make_shared<Script>();
  std::shared_ptr<ManualFileChangeMonitor> monitor = std::make_shared<ManualFileChangeMonitor>();
  std::unique_ptr<WidgetHost> host;
  std::vector<WidgetHostEvent> events;
};

TEST_F(WidgetHostTest, StartShowsThePlaceholderThenTheFirstEntryOfEveryFamily) {
  clockScript->next = {.entries = {at(0, 1)}, .policy = TimelineReloadPolicy::never()};
  notesScript->next = {.entries = {at(0, 7)}, .policy = TimelineReloadPolicy::never()};
  host->start();
  EXPECT_EQ(shown("clock", WidgetFamily::systemSmall), 1);
  EXPECT_EQ(shown("clock", WidgetFamily::systemMedium), 1);
  EXPECT_EQ(shown("notes", WidgetFamily::systemLarge), 7);
  EXPECT_EQ(host->currentEntry("clock", WidgetFamily::systemLarge), nullptr) << "an unsupported family has no instance";
  EXPECT_EQ(clockScript->timelines, 2) << "one timeline per family";
  ASSERT_GE(events.size(), 3u);
  EXPECT_EQ(events[0].kind, WidgetHostEvent::Kind::entryChanged) << "the placeholder comes first";
  EXPECT_EQ(events[1].kind, WidgetHostEvent::Kind::timelineReloaded);
  EXPECT_EQ(events[2].kind, WidgetHostEvent::Kind::entryChanged);
  EXPECT_EQ(host->nextUpdateDate(), std::nullopt) << "never, and no entry to come";
}

TEST_F(WidgetHostTest, EntriesSwitchAtTheirDatesAndAtEndReloadsAtTheLastOne) {
  clockScript->next = {.entries = {at(0, 1), at(100, 2), at(250, 3)}, .policy = TimelineReloadPolicy::atEnd()};
  host->start();
  EXPECT_EQ(shown("clock", WidgetFamily::systemSmall), 1);
  EXPECT_EQ(host->reloadDate("clock", WidgetFamily::systemSmall), Date(kStart + 250));

  clock.set(Date(kStart + 99));
  host->update();
  EXPECT_EQ(shown("clock", WidgetFamily::systemSmall), 1) << "an entry is not shown before its date";
  EXPECT_EQ(host->nextUpdateDate(), Date(kStart + 100));
  runToNextUpdate();
  EXPECT_EQ(shown("clock", WidgetFamily::systemMedium), 2);
  EXPECT_EQ(clockScript->timelines, 2);

  clockScript->next = {.entries = {at(250, 4), at(400, 5)}, .policy = TimelineReloadPolicy::atEnd()};
  runToNextUpdate();
  EXPECT_EQ(clock.now(), Date(kStart + 250));
  EXPECT_EQ(clockScript->timelines, 4) << "both families reloaded at the end";
  EXPECT_EQ(shown("clock", WidgetFamily::systemSmall), 4) << "the new timeline replaces the old one's last entry";
  EXPECT_EQ(host->reloadDate("clock", WidgetFamily::systemSmall), Date(kStart + 400));
}

TEST_F(WidgetHostTest, EntriesBeforeTheirTimeShowTheFirst) {
  clockScript->next = {.entries = {at(30, 1), at(60, 2)}, .policy = TimelineReloadPolicy::never()};
  host->start();
  EXPECT_EQ(shown("clock", WidgetFamily::systemSmall), 1);
  EXPECT_EQ(host->nextUpdateDate(), Date(kStart + 60)) << "the first entry is already shown";
}

TEST_F(WidgetHostTest, AfterReloadsAtItsDateAndNeverSoonerThanTheMinimumInterval) {
  clockScript->next = {.entries = {at(0, 1)}, .policy = TimelineReloadPolicy::after(Date(kStart + 3600))};
  host->start();
  EXPECT_EQ(host->reloadDate("clock", WidgetFamily::systemSmall), Date(kStart + 3600));

  // A moment that has passed: asked again only after the minimum interval.
  clockScript->next = {.entries = {at(3600, 2)}, .policy = TimelineReloadPolicy::after(Date(kStart - 5000))};
  runToNextUpdate();
  EXPECT_EQ(shown("clock", WidgetFamily::systemSmall), 2);
  EXPECT_EQ(host->reloadDate("clock", WidgetFamily::systemSmall), Date(kStart + 3660));
  int before = clockScript->timelines;
  clock.set(Date(kStart + 3659));
  host->update();
  EXPECT_EQ(clockScript->timelines, before) << "no reload storm for a past moment";
  runToNextUpdate();
  EXPECT_EQ(clockScript->timelines, before + 2);
}

TEST_F(WidgetHostTest, ChangedDataFileReloadsOnlyItsKindAtOnce) {
  clockScript->next = {.entries = {at(0, 1)}, .policy = TimelineReloadPolicy::never()};
  notesScript->next = {.entries = {at(0, 7)}, .policy = TimelineReloadPolicy::never()};
  host->watchDataFile("clock", "/data/clock");
  host->watchDataFile("notes", "/data/notes");
  EXPECT_EQ(monitor->watched, (std::vector<std::filesystem::path>{"/data/clock", "/data/notes"}));
  host->start();

  clock.advance(5);
  clockScript->next = {.entries = {at(5, 2)}, .policy = TimelineReloadPolicy::never()};
  monitor->changed = {"/data/clock", "/data/other"};
  host->update();
  EXPECT_EQ(shown("clock", WidgetFamily::systemSmall), 2);
  EXPECT_EQ(shown("clock", WidgetFamily::systemMedium), 2);
  EXPECT_EQ(notesScript->timelines, 1) << "another kind's file did not change";
  EXPECT_EQ(events.back().reason, WidgetHostEvent::Reason::fileChanged);

  host->update();
  EXPECT_EQ(clockScript->timelines, 4) << "a change is reported once and reloads once";
}

TEST_F(WidgetHostTest, RequestedReloadAndEmptyTimelines) {
  clockScript->next = {.entries = {at(0, 1)}, .policy = TimelineReloadPolicy::never()};
  host->start();
  clockScript->next = {.entries = {}, .policy = TimelineReloadPolicy::atEnd()};
  host->reloadTimelines("clock");
  EXPECT_EQ(shown("clock", WidgetFamily::systemSmall), 1) << "an empty timeline leaves the widget as it was";
  EXPECT_EQ(host->reloadDate("clock", WidgetFamily::systemSmall), Date(kStart + 60));
  EXPECT_EQ(events.back().reason, WidgetHostEvent::Reason::requested);

  clockScript->next = {.entries = {at(0, 3)}, .policy = TimelineReloadPolicy::never()};
  host->reloadAllTimelines();
  EXPECT_EQ(shown("clock", WidgetFamily::systemMedium), 3);
  EXPECT_EQ(host->reloadDate("clock", WidgetFamily::systemMedium), std::nullopt);
}

}  // namespace
}  // namespace kestrona
