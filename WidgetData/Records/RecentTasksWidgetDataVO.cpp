#include "WidgetData/Records/RecentTasksWidgetDataVO.h"

#include "WidgetData/Records/RecordCoding.h"

namespace kestrona {

std::optional<Date> RecentTaskVO::runningEntryBegin() const {
  if (!runningEntryBeginTimestamp) return std::nullopt;
  return Date(*runningEntryBeginTimestamp);
}

void to_json(nlohmann::json& json, const RecentTaskVO& task) {
  json = nlohmann::json::object();
  recordcoding::encodeRequired(json, "taskId", task.taskId);
  recordcoding::encodeRequired(json, "taskName", task.taskName);
  recordcoding::encodeRequired(json, "taskColor", task.taskColor);
  recordcoding::encodeRequired(json, "taskBackgroundColorOptimizedForLightContent",
                               task.taskBackgroundColorOptimizedForLightContent);
  recordcoding::encodeRequired(json, "confirmedDuration", task.confirmedDuration);
  recordcoding::encodeOptionalTime(json, "runningEntryBeginTimestamp", task.runningEntryBeginTimestamp);
}

void from_json(const nlohmann::json& json, RecentTaskVO& task) {
  recordcoding::expectObject(json);
  task.taskId = recordcoding::decodeRequired<std::string>(json, "taskId");
  task.taskName = recordcoding::decodeRequired<std::string>(json, "taskName");
  task.taskColor = recordcoding::decodeRequired<ColorTransferable>(json, "taskColor");
  task.taskBackgroundColorOptimizedForLightContent =
      recordcoding::decodeRequired<ColorTransferable>(json, "taskBackgroundColorOptimizedForLightContent");
  task.confirmedDuration = recordcoding::decodeRequired<double>(json, "confirmedDuration");
  task.runningEntryBeginTimestamp = recordcoding::decodeOptionalTime(json, "runningEntryBeginTimestamp");
}

void to_json(nlohmann::json& json, const RecentTasksWidgetDataVO& data) {
  json = nlohmann::json::object();
  recordcoding::encodeRequired(json, "tasks", data.tasks);
}

void from_json(const nlohmann::json& json, RecentTasksWidgetDataVO& data) {
  recordcoding::expectObject(json);
  data.tasks = recordcoding::decodeRequired<std::vector<RecentTaskVO>>(json, "tasks");
}

}  // namespace kestrona
