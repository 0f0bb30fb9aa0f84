// What the recent tasks widget shows: the tasks of the recent tasks file in
// its order (the widget shows a prefix and never sorts). A plain value.
#pragma once

#include <vector>

#include "Platform/Time/Date.h"
#include "WidgetData/Records/RecentTasksWidgetDataVO.h"

namespace kestrona {

struct RecentTasksEntry {
  Date date;
  std::vector<RecentTaskVO> tasks;

  friend bool operator==(const RecentTasksEntry&, const RecentTasksEntry&) = default;
};

}  // namespace kestrona
