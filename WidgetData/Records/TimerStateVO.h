// The record of the file "timer": the state of the timer or, when nothing
// runs, the most recent time entry.
//
// Every field is optional, so "{}" is a valid file that means nothing is
// known. A running entry has a begin and no end; the widgets read running
// state from the missing end. Times are seconds since 1970.
//
// A plain value, compared field by field; safe to share between threads.
// timeEntryEffectiveDuration() reads the present moment through Date::now().
#pragma once

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "Platform/Time/Date.h"
#include "WidgetData/Records/ColorTransferable.h"

namespace kestrona {

struct TimerStateVO {
  // The absolute string of the task's object URI, or "" for no task.
  std::optional<std::string> taskId;
  std::optional<std::string> taskName;
  std::optional<ColorTransferable> taskColor;
  std::optional<ColorTransferable> taskBackgroundColorOptimizedForLightContent;
  // A 32-bit number in the file as in the colour set it comes from.
  std::optional<float> startButtonBackgroundOpacity;
  std::optional<std::string> folderName;
  std::optional<double> timeEntryBeginTimestamp;
  // None while the entry runs.
  std::optional<double> timeEntryEndTimestamp;

  std::optional<Date> timeEntryBegin() const;
  std::optional<Date> timeEntryEnd() const;
  // Zero without a begin; otherwise the end (or, while running, the present
  // moment) minus the begin, in seconds. Not clamped: an end before the
  // begin gives a negative duration.
  double timeEntryEffectiveDuration() const;

  friend bool operator==(const TimerStateVO&, const TimerStateVO&) = default;
};

void to_json(nlohmann::json& json, const TimerStateVO& state);
void from_json(const nlohmann::json& json, TimerStateVO& state);

}  // namespace kestrona
