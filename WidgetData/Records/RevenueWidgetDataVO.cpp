#include "WidgetData/Records/RevenueWidgetDataVO.h"

#include "WidgetData/Records/RecordCoding.h"

namespace kestrona {
namespace {

constexpr ColorTransferable kWhite{1, 1, 1, 1};

}  // namespace

RevenueWidgetDataVO RevenueWidgetDataVO::empty() {
  RevenueWidgetDataVO data;
  data.currentTimeEntry = CurrentTimeEntryVO{.taskId = "", .begin = std::nullopt, .taskColor = kWhite};
  return data;
}

void to_json(nlohmann::json& json, const RevenueWidgetDataVO& data) {
  json = nlohmann::json::object();
  recordcoding::encodeRequired(json, "bars", data.bars);
  recordcoding::encodeOptional(json, "currentTimeEntry", data.currentTimeEntry);
  recordcoding::encodeOptional(json, "currentTimeEntryHourRate", data.currentTimeEntryHourRate);
  recordcoding::encodeRequired(json, "currencyLocalIdentifier", data.currencyLocalIdentifier);
  recordcoding::encodeRequired(json, "firstDayOfWeek", data.firstDayOfWeek);
}

void from_json(const nlohmann::json& json, RevenueWidgetDataVO& data) {
  recordcoding::expectObject(json);
  data.bars = recordcoding::decodeRequired<std::vector<ChartBarVO>>(json, "bars");
  data.currentTimeEntry = recordcoding::decodeOptional<CurrentTimeEntryVO>(json, "currentTimeEntry");
  data.currentTimeEntryHourRate = recordcoding::decodeOptional<double>(json, "currentTimeEntryHourRate");
  data.currencyLocalIdentifier = recordcoding::decodeRequired<std::string>(json, "currencyLocalIdentifier");
  data.firstDayOfWeek = recordcoding::decodeRequired<std::int64_t>(json, "firstDayOfWeek");
}

}  // namespace kestrona
