#include "WidgetData/Records/WidgetType.h"

#include "Platform/Foundation/LocalizedString.h"

namespace kestrona {

std::string displayName(WidgetType type) {
  switch (type) {
    case WidgetType::timer:
      return localizedString("widget.timer.title", "Timer", "Widget gallery: name of the Timer widget");
    case WidgetType::weeklyTimeTrackedChart:
      return localizedString("widget.timeTrackedWeek.title", "Time tracked this week",
                             "Widget gallery: name of the weekly time widget");
    case WidgetType::monthlyTimeTrackedChart:
      return localizedString("widget.timeTrackedMonth.title", "Time tracked this month",
                             "Widget gallery: name of the monthly time widget");
    case WidgetType::weeklyRevenueChart:
      return localizedString("widget.revenueWeek.title", "Revenue this week",
                             "Widget gallery: name of the weekly revenue widget");
    case WidgetType::monthlyRevenueChart:
      return localizedString("widget.revenueMonth.title", "Revenue this month",
                             "Widget gallery: name of the monthly revenue widget");
    case WidgetType::recentTasks:
      return localizedString("widget.recentTasks.title", "Recent tasks",
                             "Widget gallery: name of the Recent tasks widget");
  }
  return {};
}

std::string description(WidgetType type) {
  switch (type) {
    case WidgetType::timer:
      return localizedString(
          "widget.timer.description",
          "View your current or most recent time entry, with the ability to start/stop timer with a tap.",
          "Widget gallery: description of the Timer widget");
    case WidgetType::weeklyTimeTrackedChart:
      return localizedString("widget.timeTrackedWeek.description", "View how much time did you track this week.",
                             "Widget gallery: description of the weekly time widget");
    case WidgetType::monthlyTimeTrackedChart:
      return localizedString("widget.timeTrackedMonth.description", "View how much time did you track this month.",
                             "Widget gallery: description of the monthly time widget");
    case WidgetType::weeklyRevenueChart:
      return localizedString("widget.revenueWeek.description", "View how much you earned this week.",
                             "Widget gallery: description of the weekly revenue widget");
    case WidgetType::monthlyRevenueChart:
      return localizedString("widget.revenueMonth.description", "View how much you earned this month.",
                             "Widget gallery: description of the monthly revenue widget");
    case WidgetType::recentTasks:
      return localizedString("widget.recentTasks.description",
                             "View your recent tasks and last session and toggle the timer of task",
                             "Widget gallery: description of the Recent tasks widget");
  }
  return {};
}

}  // namespace kestrona
