// The record of the file "recentTasks": the recent tasks in the order in
// which the widget shows them (it shows a prefix and never sorts).
//
// `tasks` is required, so "{}" is not a valid file. Every field of a
// RecentTaskVO is required except the begin of its running entry, which is
// absent when the task does not run. Plain values, compared field by field;
// safe to share between threads.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "Platform/Time/Date.h"
#include "WidgetData/Records/ColorTransferable.h"

namespace kestrona {

struct RecentTaskVO {
  // The absolute string of the task's object URI.
  std::string taskId;
  std::string taskName;
  ColorTransferable taskColor;
  ColorTransferable taskBackgroundColorOptimizedForLightContent;
  // Seconds already tracked and confirmed.
  double confirmedDuration = 0;
  // Seconds since 1970; none when the task does not run.
  std::optional<double> runningEntryBeginTimestamp;

  bool isRunning() const { return runningEntryBeginTimestamp.has_value(); }
  std::optional<Date> runningEntryBegin() const;

  friend bool operator==(const RecentTaskVO&, const RecentTaskVO&) = default;
};

struct RecentTasksWidgetDataVO {
  std::vector<RecentTaskVO> tasks;

  friend bool operator==(const RecentTasksWidgetDataVO&, const RecentTasksWidgetDataVO&) = default;
};

void to_json(nlohmann::json& json, const RecentTaskVO& task);
void from_json(const nlohmann::json& json, RecentTaskVO& task);
void to_json(nlohmann::json& json, const RecentTasksWidgetDataVO& data);
void from_json(const nlohmann::json& json, RecentTasksWidgetDataVO& data);

}  // namespace kestrona
