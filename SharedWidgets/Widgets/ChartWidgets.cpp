#include "SharedWidgets/Widgets/ChartWidgets.h"

#include "Platform/Foundation/FatalError.h"
#include "SharedWidgets/Timelines/ChartWidgetProvider.h"
#include "SharedWidgets/Widgets/WidgetDescription.h"

namespace kestrona {
namespace {

constexpr std::string_view kMissingGroupName = "Widget should be initialized with appGroupName";

template <typename Provider>
WidgetConfiguration chartConfiguration(std::string_view kind, const std::string& appGroupName, WidgetType type,
                                       WidgetDateRangeType dateRangeType) {
  Provider provider(dateRangeType, WidgetDataReader::withAppGroupName(appGroupName, type));
  return describedConfiguration(WidgetConfiguration::staticConfiguration(std::string(kind), std::move(provider)),
                                type, {WidgetFamily::systemMedium, WidgetFamily::systemSmall});
}

}  // namespace

TimeTrackedWeeklyChartWidget::TimeTrackedWeeklyChartWidget() { fatalError(kMissingGroupName); }
TimeTrackedMonthlyChartWidget::TimeTrackedMonthlyChartWidget() { fatalError(kMissingGroupName); }
RevenueWeeklyChartWidget::RevenueWeeklyChartWidget() { fatalError(kMissingGroupName); }
RevenueMonthlyChartWidget::RevenueMonthlyChartWidget() { fatalError(kMissingGroupName); }

WidgetConfiguration TimeTrackedWeeklyChartWidget::configuration() const {
  return chartConfiguration<TimeTrackedWidgetProvider>(kind, appGroupName, WidgetType::weeklyTimeTrackedChart,
                                                       WidgetDateRangeType::weekly);
}

WidgetConfiguration TimeTrackedMonthlyChartWidget::configuration() const {
  return chartConfiguration<TimeTrackedWidgetProvider>(kind, appGroupName, WidgetType::monthlyTimeTrackedChart,
                                                       WidgetDateRangeType::monthly);
}

WidgetConfiguration RevenueWeeklyChartWidget::configuration() const {
  return chartConfiguration<RevenueWidgetProvider>(kind, appGroupName, WidgetType::weeklyRevenueChart,
                                                   WidgetDateRangeType::weekly);
}

WidgetConfiguration RevenueMonthlyChartWidget::configuration() const {
  return chartConfiguration<RevenueWidgetProvider>(kind, appGroupName, WidgetType::monthlyRevenueChart,
                                                   WidgetDateRangeType::monthly);
}

}  // namespace kestrona
