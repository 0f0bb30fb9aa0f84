#include "SharedWidgets/Timelines/TimerWidgetEntry.h"

namespace kestrona {
namespace {

Color colorOrWhite(const std::optional<ColorTransferable>& color) {
  return color ? color->color() : Color::white();
}

}  // namespace

TimerWidgetEntry TimerWidgetEntry::fromRecord(const TimerStateVO& record, Date date) {
  return TimerWidgetEntry{
      .date = date,
      .taskId = record.taskId,
      .taskName = record.taskName,
      .taskColor = colorOrWhite(record.taskColor),
      .startButtonBackgroundOpacity = record.startButtonBackgroundOpacity,
      .taskBackgroundColorOptimizedForLightContent = colorOrWhite(record.taskBackgroundColorOptimizedForLightContent),
      .folderName = record.folderName,
      .timeEntryBegin = record.timeEntryBegin(),
      .timeEntryEnd = record.timeEntryEnd(),
  };
}

}  // namespace kestrona
