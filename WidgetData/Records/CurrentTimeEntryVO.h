// The running time entry in a chart file, so that a chart widget can add
// its time to the bars by itself between two writes of the file.
//
// `taskId` is the absolute string of the task's object URI, or "" when the
// entry has no task; `begin` is seconds since 1970 and may be absent;
// `taskColor` is required, and a file whose entry lacks it fails as a whole.
// A plain value, compared field by field; safe to share between threads.
#pragma once

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "WidgetData/Records/ColorTransferable.h"

namespace kestrona {

struct CurrentTimeEntryVO {
  std::string taskId;
  std::optional<double> begin;
  ColorTransferable taskColor;

  friend bool operator==(const CurrentTimeEntryVO&, const CurrentTimeEntryVO&) = default;
};

void to_json(nlohmann::json& json, const CurrentTimeEntryVO& entry);
void from_json(const nlohmann::json& json, CurrentTimeEntryVO& entry);

}  // namespace kestrona
