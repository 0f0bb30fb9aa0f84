#include "WidgetData/Records/TimerStateVO.h"

#include "WidgetData/Records/RecordCoding.h"

namespace kestrona {

std::optional<Date> TimerStateVO::timeEntryBegin() const {
  if (!timeEntryBeginTimestamp) return std::nullopt;
  return Date(*timeEntryBeginTimestamp);
}

std::optional<Date> TimerStateVO::timeEntryEnd() const {
  if (!timeEntryEndTimestamp) return std::nullopt;
  return Date(*timeEntryEndTimestamp);
}

double TimerStateVO::timeEntryEffectiveDuration() const {
  std::optional<Date> begin = timeEntryBegin();
  if (!begin) return 0;
  Date end = timeEntryEnd().value_or(Date::now());
  return end.timeIntervalSince(*begin);
}

void to_json(nlohmann::json& json, const TimerStateVO& state) {
  json = nlohmann::json::object();
  recordcoding::encodeOptional(json, "taskId", state.taskId);
  recordcoding::encodeOptional(json, "taskName", state.taskName);
  recordcoding::encodeOptional(json, "taskColor", state.taskColor);
  recordcoding::encodeOptional(json, "taskBackgroundColorOptimizedForLightContent",
                               state.taskBackgroundColorOptimizedForLightContent);
  recordcoding::encodeOptional(json, "startButtonBackgroundOpacity", state.startButtonBackgroundOpacity);
  recordcoding::encodeOptional(json, "folderName", state.folderName);
  recordcoding::encodeOptionalTime(json, "timeEntryBeginTimestamp", state.timeEntryBeginTimestamp);
  recordcoding::encodeOptionalTime(json, "timeEntryEndTimestamp", state.timeEntryEndTimestamp);
}

void from_json(const nlohmann::json& json, TimerStateVO& state) {
  recordcoding::expectObject(json);
  state.taskId = recordcoding::decodeOptional<std::string>(json, "taskId");
  state.taskName = recordcoding::decodeOptional<std::string>(json, "taskName");
  state.taskColor = recordcoding::decodeOptional<ColorTransferable>(json, "taskColor");
  state.taskBackgroundColorOptimizedForLightContent =
      recordcoding::decodeOptional<ColorTransferable>(json, "taskBackgroundColorOptimizedForLightContent");
  state.startButtonBackgroundOpacity = recordcoding::decodeOptional<float>(json, "startButtonBackgroundOpacity");
  state.folderName = recordcoding::decodeOptional<std::string>(json, "folderName");
  state.timeEntryBeginTimestamp = recordcoding::decodeOptionalTime(json, "timeEntryBeginTimestamp");
  state.timeEntryEndTimestamp = recordcoding::decodeOptionalTime(json, "timeEntryEndTimestamp");
}

}  // namespace kestrona
