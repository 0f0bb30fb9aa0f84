#include "Extension/WidgetProcess/WidgetViews.h"

#include <string>

#include "Platform/Foundation/FatalError.h"
#include "Platform/View/WidgetCanvas.h"
#include "SharedWidgets/Views/Chart/ChartWidgetView.h"
#include "SharedWidgets/Views/RecentTasks/RecentTasksWidgetView.h"
#include "SharedWidgets/Views/Timer/TimerWidgetView.h"
#include "SharedWidgets/Widgets/ChartWidgets.h"
#include "SharedWidgets/Widgets/RecentTasksWidget.h"
#include "SharedWidgets/Widgets/TimerWidget.h"

namespace kestrona {
namespace {

template <typename Entry>
const Entry& entryOf(std::string_view kind, const AnyTimelineEntry& entry) {
  const Entry* typed = entry.as<Entry>();
  if (!typed) fatalError("The widget '" + std::string(kind) + "' was given an entry of another widget");
  return *typed;
}

}  // namespace

View widgetView(std::string_view kind, const AnyTimelineEntry& entry, WidgetFamily family) {
  using Range = ChartView::DateRangeType;
  if (kind == TimerWidget::kind) return makeTimerWidgetView(entryOf<TimerWidgetEntry>(kind, entry), family).body();
  if (kind == RecentTasksWidget::kind) {
    return makeRecentTasksWidgetView(entryOf<RecentTasksEntry>(kind, entry), family).body();
  }
  if (kind == TimeTrackedWeeklyChartWidget::kind) {
    return ChartWidgetView::forTimeTracked(entryOf<TimeTrackedWidgetEntry>(kind, entry), Range::weekly, family).body();
  }
  if (kind == TimeTrackedMonthlyChartWidget::kind) {
    return ChartWidgetView::forTimeTracked(entryOf<TimeTrackedWidgetEntry>(kind, entry), Range::monthly, family).body();
  }
  if (kind == RevenueWeeklyChartWidget::kind) {
    return ChartWidgetView::forRevenue(entryOf<RevenueWidgetEntry>(kind, entry), Range::weekly, family).body();
  }
  if (kind == RevenueMonthlyChartWidget::kind) {
    return ChartWidgetView::forRevenue(entryOf<RevenueWidgetEntry>(kind, entry), Range::monthly, family).body();
  }
  fatalError("No view for the widget kind '" + std::string(kind) + "'");
}

Size widgetCanvasSize(WidgetFamily family) {
  switch (family) {
    case WidgetFamily::systemSmall: return widgetcanvas::kSmall;
    case WidgetFamily::systemMedium: return widgetcanvas::kMedium;
    case WidgetFamily::systemLarge: return widgetcanvas::kLarge;
  }
  return widgetcanvas::kSmall;
}

LayoutTree layOutWidget(std::string_view kind, const AnyTimelineEntry& entry, WidgetFamily family) {
  return layout(widgetView(kind, entry, family), widgetCanvasSize(family));
}

}  // namespace kestrona
