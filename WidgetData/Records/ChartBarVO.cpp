#include "WidgetData/Records/ChartBarVO.h"

#include "WidgetData/Records/RecordCoding.h"

namespace kestrona {

void to_json(nlohmann::json& json, const ChartBarSegmentVO& segment) {
  json = nlohmann::json::object();
  recordcoding::encodeRequired(json, "taskId", segment.taskId);
  recordcoding::encodeRequired(json, "taskColor", segment.taskColor);
  recordcoding::encodeRequired(json, "value", segment.value);
}

void from_json(const nlohmann::json& json, ChartBarSegmentVO& segment) {
  recordcoding::expectObject(json);
  segment.taskId = recordcoding::decodeRequired<std::string>(json, "taskId");
  segment.taskColor = recordcoding::decodeRequired<ColorTransferable>(json, "taskColor");
  segment.value = recordcoding::decodeRequired<double>(json, "value");
}

void to_json(nlohmann::json& json, const ChartBarVO& bar) {
  json = nlohmann::json::object();
  recordcoding::encodeRequiredTime(json, "date", bar.date);
  recordcoding::encodeRequired(json, "timeEntryCount", bar.timeEntryCount);
  recordcoding::encodeRequired(json, "segments", bar.segments);
  recordcoding::encodeRequired(json, "totalValue", bar.totalValue);
}

void from_json(const nlohmann::json& json, ChartBarVO& bar) {
  recordcoding::expectObject(json);
  bar.date = recordcoding::decodeRequiredTime(json, "date");
  bar.timeEntryCount = recordcoding::decodeRequired<std::int64_t>(json, "timeEntryCount");
  bar.segments = recordcoding::decodeRequired<std::vector<ChartBarSegmentVO>>(json, "segments");
  bar.totalValue = recordcoding::decodeRequired<double>(json, "totalValue");
}

}  // namespace kestrona
