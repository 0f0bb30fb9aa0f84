#include "Extension/WidgetProcess/KestronaWidgets.h"

#include "Extension/DeepLinkTimerWidgetIntentHost.h"
#include "SharedWidgets/Widgets/ChartWidgets.h"
#include "SharedWidgets/Widgets/RecentTasksWidget.h"
#include "SharedWidgets/Widgets/TimerWidget.h"
#include "WidgetData/TimerIntent/TimerWidgetIntentHost.h"

namespace kestrona {

KestronaWidgets::KestronaWidgets() { TimerWidgetIntentHost::setCurrent(DeepLinkTimerWidgetIntentHost::make()); }

std::vector<WidgetConfiguration> KestronaWidgets::body() const {
  return {
      TimerWidget(appGroupName).configuration(),
      RecentTasksWidget(appGroupName).configuration(),
      TimeTrackedWeeklyChartWidget(appGroupName).configuration(),
      TimeTrackedMonthlyChartWidget(appGroupName).configuration(),
      RevenueWeeklyChartWidget(appGroupName).configuration(),
      RevenueMonthlyChartWidget(appGroupName).configuration(),
  };
}

}  // namespace kestrona
