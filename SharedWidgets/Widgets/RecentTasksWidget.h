// The recent tasks widget: kind "recentTasks", in the small, medium and
// large families, fed by the recent tasks file through
// RecentTasksTimelineProvider. A value holding the group name, like
// TimerWidget; the parameterless constructor is a fatal error.
#pragma once

#include <string>

#include "Platform/WidgetHost/WidgetConfiguration.h"

namespace kestrona {

struct RecentTasksWidget {
  static constexpr std::string_view kind = "recentTasks";

  std::string appGroupName;

  RecentTasksWidget();
  explicit RecentTasksWidget(std::string groupName) : appGroupName(std::move(groupName)) {}

  WidgetConfiguration configuration() const;
};

}  // namespace kestrona
