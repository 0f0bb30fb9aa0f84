#include "WidgetData/Records/CurrentTimeEntryVO.h"

#include "WidgetData/Records/RecordCoding.h"

namespace kestrona {

void to_json(nlohmann::json& json, const CurrentTimeEntryVO& entry) {
  json = nlohmann::json::object();
  recordcoding::encodeRequired(json, "taskId", entry.taskId);
  recordcoding::encodeOptionalTime(json, "begin", entry.begin);
  recordcoding::encodeRequired(json, "taskColor", entry.taskColor);
}

void from_json(const nlohmann::json& json, CurrentTimeEntryVO& entry) {
  recordcoding::expectObject(json);
  entry.taskId = recordcoding::decodeRequired<std::string>(json, "taskId");
  entry.begin = recordcoding::decodeOptionalTime(json, "begin");
  entry.taskColor = recordcoding::decodeRequired<ColorTransferable>(json, "taskColor");
}

}  // namespace kestrona
