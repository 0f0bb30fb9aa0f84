// The timer widget: kind "timer", in the small and medium families, fed by
// the timer file of the application group through TimerWidgetTimelineProvider.
//
// A widget is a value holding the group name; configuration() makes a new
// provider (and with it the timer's placeholder entry) each time it is
// called. The parameterless constructor exists only for generic code and is
// a fatal error: "Widget should be initialized with appGroupName".
#pragma once

#include <string>

#include "Platform/WidgetHost/WidgetConfiguration.h"

namespace kestrona {

struct TimerWidget {
  static constexpr std::string_view kind = "timer";

  std::string appGroupName;

  TimerWidget();
  explicit TimerWidget(std::string groupName) : appGroupName(std::move(groupName)) {}

  WidgetConfiguration configuration() const;
};

}  // namespace kestrona
