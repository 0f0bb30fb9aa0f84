#include "SharedWidgets/Timelines/RecentTasksTimelineProvider.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Platform/Foundation/FatalError.h"
#include "SharedCore/Support/Colors/ColorHexParsing.h"
#include "SharedCore/Support/Colors/ColorSet.h"

namespace kestrona {
namespace {

constexpr double kReloadDelayAfterRunningBegin = 360005;
constexpr double kSampleRunningFor = 8334;

struct SampleTask {
  std::string_view name;
  ColorSet::ID colorSetId;
  double confirmedDuration;
  bool running;
};

constexpr std::array<SampleTask, 8> kSampleTasks = {{
    {"Concept", ColorSet::ID::red, 8280, false},
    {"Sketching", ColorSet::ID::violett, 0, true},
    {"Development", ColorSet::ID::green2, 37800, false},
    {"Design", ColorSet::ID::blue, 44220, false},
    {"Video Blog", ColorSet::ID::teal, 8280, false},
    {"Fitness", ColorSet::ID::lightPink, 8280, false},
    {"Remodeling", ColorSet::ID::green2, 37800, false},
    {"My Website", ColorSet::ID::orange, 44220, false},
}};

ColorTransferable darkDisplayP3Transferable(std::string_view hexString) {
  RGBAComponents components = displayP3HexToRGBA(hexString);
  return toTransferable(Color::displayP3(components.red, components.green, components.blue, components.alpha));
}

RecentTasksEntry makeSampleEntry() {
  Date now = Date::now();
  RecentTasksEntry entry{.date = now, .tasks = {}};
  for (const SampleTask& sample : kSampleTasks) {
    ColorSet colorSet(sample.colorSetId);
    std::optional<double> runningBegin;
    if (sample.running) runningBegin = now.addingTimeInterval(-kSampleRunningFor).timeIntervalSince1970();
    entry.tasks.push_back(RecentTaskVO{
        .taskId = std::string(sample.name),
        .taskName = std::string(sample.name),
        .taskColor = darkDisplayP3Transferable(colorSet.displayP3HexString(true)),
        .taskBackgroundColorOptimizedForLightContent =
            darkDisplayP3Transferable(colorSet.displayP3HexBackgroundColorOptimizedForLightContent(true)),
        .confirmedDuration = sample.confirmedDuration,
        .runningEntryBeginTimestamp = runningBegin,
    });
  }
  return entry;
}

}  // namespace

RecentTasksTimelineProvider::RecentTasksTimelineProvider(
    std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader)
    : widgetDataReader_(std::move(widgetDataReader)) {
  precondition(widgetDataReader_ != nullptr, "RecentTasksTimelineProvider needs a reader");
}

const RecentTasksEntry& RecentTasksTimelineProvider::sampleEntry() {
  static const RecentTasksEntry entry = makeSampleEntry();
  return entry;
}

RecentTasksEntry RecentTasksTimelineProvider::placeholder(const TimelineProviderContext& /*context*/) const {
  return sampleEntry();
}

RecentTasksEntry RecentTasksTimelineProvider::currentEntry() const {
  WidgetDataResult<RecentTasksWidgetDataVO> record = widgetDataReader_->readCodableData<RecentTasksWidgetDataVO>();
  if (!record.isSuccess()) return sampleEntry();
  return RecentTasksEntry{.date = Date::now(), .tasks = record.value().tasks};
}

void RecentTasksTimelineProvider::getSnapshot(const TimelineProviderContext& /*context*/,
                                              const std::function<void(RecentTasksEntry)>& completion) const {
  completion(currentEntry());
}

void RecentTasksTimelineProvider::getTimeline(const TimelineProviderContext& /*context*/,
                                              const std::function<void(Timeline<RecentTasksEntry>)>& completion) const {
  RecentTasksEntry entry = currentEntry();
  auto running = std::find_if(entry.tasks.begin(), entry.tasks.end(),
                              [](const RecentTaskVO& task) { return task.runningEntryBegin().has_value(); });
  TimelineReloadPolicy policy =
      running != entry.tasks.end()
          ? TimelineReloadPolicy::after(running->runningEntryBegin()->addingTimeInterval(kReloadDelayAfterRunningBegin))
          : TimelineReloadPolicy::never();
  completion(Timeline<RecentTasksEntry>{.entries = {std::move(entry)}, .policy = policy});
}

}  // namespace kestrona
