// What the timer widget shows at one moment: the task of the running or
// most recent time entry, its colours, and the entry's begin and end.
//
// Made from the timer file's record by fromRecord(): absent colours become
// white, every other field is copied as it stands (absent stays absent).
// isTimerRunning() holds exactly when there is a begin and no end; an end
// without a begin is not running. A plain value; safe to share between
// threads.
#pragma once

#include <optional>
#include <string>

#include "Platform/Color/Color.h"
#include "Platform/Time/Date.h"
#include "WidgetData/Records/TimerStateVO.h"

namespace kestrona {

struct TimerWidgetEntry {
  Date date;
  std::optional<std::string> taskId;
  std::optional<std::string> taskName;
  Color taskColor = Color::white();
  std::optional<float> startButtonBackgroundOpacity;
  Color taskBackgroundColorOptimizedForLightContent = Color::white();
  std::optional<std::string> folderName;
  std::optional<Date> timeEntryBegin;
  std::optional<Date> timeEntryEnd;

  static TimerWidgetEntry fromRecord(const TimerStateVO& record, Date date);

  bool isTimerRunning() const { return timeEntryBegin.has_value() && !timeEntryEnd.has_value(); }

  friend bool operator==(const TimerWidgetEntry&, const TimerWidgetEntry&) = default;
};

}  // namespace kestrona
