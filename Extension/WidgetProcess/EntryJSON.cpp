#include "Extension/WidgetProcess/EntryJSON.h"

#include "Platform/Foundation/FatalError.h"
#include "SharedWidgets/Timelines/RecentTasksEntry.h"
#include "SharedWidgets/Timelines/RevenueWidgetEntry.h"
#include "SharedWidgets/Timelines/TimeTrackedWidgetEntry.h"
#include "SharedWidgets/Timelines/TimerWidgetEntry.h"
#include "WidgetData/Records/ColorTransferable.h"

namespace kestrona {
namespace {

using Json = nlohmann::ordered_json;

Json colorJSON(const ColorTransferable& color) {
  Json json = Json::object();
  json["redComponent"] = color.redComponent;
  json["greenComponent"] = color.greenComponent;
  json["blueComponent"] = color.blueComponent;
  json["alphaComponent"] = color.alphaComponent;
  return json;
}

Json colorJSON(const Color& color) { return colorJSON(toTransferable(color)); }

template <typename Value>
void putOptional(Json& json, const char* key, const std::optional<Value>& value) {
  if (value) json[key] = *value;
}

void putOptional(Json& json, const char* key, const std::optional<Date>& value) {
  if (value) json[key] = value->timeIntervalSince1970();
}

Json timerJSON(const TimerWidgetEntry& entry) {
  Json json = Json::object();
  json["date"] = entry.date.timeIntervalSince1970();
  putOptional(json, "taskId", entry.taskId);
  putOptional(json, "taskName", entry.taskName);
  json["taskColor"] = colorJSON(entry.taskColor);
  putOptional(json, "startButtonBackgroundOpacity", entry.startButtonBackgroundOpacity);
  json["taskBackgroundColorOptimizedForLightContent"] = colorJSON(entry.taskBackgroundColorOptimizedForLightContent);
  putOptional(json, "folderName", entry.folderName);
  putOptional(json, "timeEntryBegin", entry.timeEntryBegin);
  putOptional(json, "timeEntryEnd", entry.timeEntryEnd);
  json["isTimerRunning"] = entry.isTimerRunning();
  return json;
}

Json recentTasksJSON(const RecentTasksEntry& entry) {
  Json json = Json::object();
  json["date"] = entry.date.timeIntervalSince1970();
  json["tasks"] = Json::array();
  for (const RecentTaskVO& task : entry.tasks) {
    Json item = Json::object();
    item["taskId"] = task.taskId;
    item["taskName"] = task.taskName;
    item["taskColor"] = colorJSON(task.taskColor);
    item["taskBackgroundColorOptimizedForLightContent"] = colorJSON(task.taskBackgroundColorOptimizedForLightContent);
    item["confirmedDuration"] = task.confirmedDuration;
    putOptional(item, "runningEntryBeginTimestamp", task.runningEntryBeginTimestamp);
    json["tasks"].push_back(std::move(item));
  }
  return json;
}

Json chartBarsJSON(const std::vector<ChartBar>& bars) {
  Json json = Json::array();
  for (const ChartBar& bar : bars) {
    Json segments = Json::array();
    for (const ChartBarSegment& segment : bar.segments) {
      Json item = Json::object();
      item["taskId"] = segment.taskId;
      item["color"] = colorJSON(segment.color);
      item["value"] = segment.value;
      segments.push_back(std::move(item));
    }
    Json item = Json::object();
    item["date"] = bar.date.timeIntervalSince1970();
    item["segments"] = std::move(segments);
    item["totalValue"] = bar.totalValue;
    json.push_back(std::move(item));
  }
  return json;
}

template <typename ChartEntry>
Json chartJSON(const ChartEntry& entry) {
  Json json = Json::object();
  json["date"] = entry.date.timeIntervalSince1970();
  json["chartBars"] = chartBarsJSON(entry.chartBars);
  json["firstDayOfWeek"] = entry.firstDayOfWeek;
  return json;
}

}  // namespace

nlohmann::ordered_json entryJSON(const AnyTimelineEntry& entry) {
  if (const auto* timer = entry.as<TimerWidgetEntry>()) return timerJSON(*timer);
  if (const auto* recent = entry.as<RecentTasksEntry>()) return recentTasksJSON(*recent);
  if (const auto* timeTracked = entry.as<TimeTrackedWidgetEntry>()) return chartJSON(*timeTracked);
  if (const auto* revenue = entry.as<RevenueWidgetEntry>()) {
    Json json = chartJSON(*revenue);
    json["currencyLocalIdentifier"] = revenue->currencyLocalIdentifier;
    return json;
  }
  fatalError("A timeline entry of a type the widget process does not know");
}

nlohmann::ordered_json policyJSON(const TimelineReloadPolicy& policy) {
  Json json = Json::object();
  json["type"] = std::string(rawValue(policy.kind()));
  if (policy.date()) json["date"] = policy.date()->timeIntervalSince1970();
  return json;
}

}  // namespace kestrona
