#include "SharedWidgets/Timelines/TimerWidgetTimelineProvider.h"

#include <string_view>

#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/LocalizedString.h"
#include "Platform/Time/DateFormatter.h"

namespace kestrona {
namespace {

constexpr double kReloadDelayAfterBegin = 3600;

// A date formatter at its default settings has neither a format nor styles
// and reads no date; the placeholder's times therefore stay absent. Kept so
// on purpose: see the header.
std::optional<Date> parseWithDefaultFormatter(std::string_view text) {
  DateFormatter formatter;
  return formatter.date(text);
}

TimerWidgetEntry makePlaceholderEntry() {
  return TimerWidgetEntry{
      .date = Date::now(),
      .taskId = "123",
      .taskName = localizedString("widget.timer.placeholderTask", "Task",
                                  "Timer widget before the app has written any data"),
      .taskColor = Color::white(),
      .startButtonBackgroundOpacity = 0.5f,
      .taskBackgroundColorOptimizedForLightContent = Color::white(),
      .folderName = std::nullopt,
      .timeEntryBegin = parseWithDefaultFormatter("09 December 2020 09:15:00"),
      .timeEntryEnd = parseWithDefaultFormatter("09 December 2020 11:29:28"),
  };
}

}  // namespace

TimerWidgetTimelineProvider::TimerWidgetTimelineProvider(
    std::shared_ptr<const WidgetDataReaderProtocol> widgetDataReader)
    : widgetDataReader_(std::move(widgetDataReader)), placeholderEntry_(makePlaceholderEntry()) {
  precondition(widgetDataReader_ != nullptr, "TimerWidgetTimelineProvider needs a reader");
}

TimerWidgetEntry TimerWidgetTimelineProvider::placeholder(const TimelineProviderContext& /*context*/) const {
  return placeholderEntry_;
}

TimerWidgetEntry TimerWidgetTimelineProvider::currentEntry() const {
  WidgetDataResult<TimerStateVO> record = widgetDataReader_->readCodableData<TimerStateVO>();
  if (!record.isSuccess()) return placeholderEntry_;
  return TimerWidgetEntry::fromRecord(record.value(), Date::now());
}

void TimerWidgetTimelineProvider::getSnapshot(const TimelineProviderContext& /*context*/,
                                              const std::function<void(TimerWidgetEntry)>& completion) const {
  completion(currentEntry());
}

void TimerWidgetTimelineProvider::getTimeline(const TimelineProviderContext& /*context*/,
                                              const std::function<void(Timeline<TimerWidgetEntry>)>& completion) const {
  TimerWidgetEntry entry = currentEntry();
  TimelineReloadPolicy policy = entry.timeEntryBegin
                                    ? TimelineReloadPolicy::after(entry.timeEntryBegin->addingTimeInterval(kReloadDelayAfterBegin))
                                    : TimelineReloadPolicy::never();
  completion(Timeline<TimerWidgetEntry>{.entries = {std::move(entry)}, .policy = policy});
}

}  // namespace kestrona
