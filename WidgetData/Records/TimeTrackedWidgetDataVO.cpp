#include "WidgetData/Records/TimeTrackedWidgetDataVO.h"

#include "WidgetData/Records/RecordCoding.h"

namespace kestrona {
namespace {

constexpr ColorTransferable kWhite{1, 1, 1, 1};

}  // namespace

TimeTrackedWidgetDataVO TimeTrackedWidgetDataVO::empty() {
  TimeTrackedWidgetDataVO data;
  data.currentTimeEntry = CurrentTimeEntryVO{.taskId = "", .begin = std::nullopt, .taskColor = kWhite};
  return data;
}

void to_json(nlohmann::json& json, const TimeTrackedWidgetDataVO& data) {
  json = nlohmann::json::object();
  recordcoding::encodeRequired(json, "bars", data.bars);
  recordcoding::encodeOptional(json, "currentTimeEntry", data.currentTimeEntry);
  recordcoding::encodeRequired(json, "firstDayOfWeek", data.firstDayOfWeek);
}

void from_json(const nlohmann::json& json, TimeTrackedWidgetDataVO& data) {
  recordcoding::expectObject(json);
  data.bars = recordcoding::decodeRequired<std::vector<ChartBarVO>>(json, "bars");
  data.currentTimeEntry = recordcoding::decodeOptional<CurrentTimeEntryVO>(json, "currentTimeEntry");
  data.firstDayOfWeek = recordcoding::decodeRequired<std::int64_t>(json, "firstDayOfWeek");
}

}  // namespace kestrona
