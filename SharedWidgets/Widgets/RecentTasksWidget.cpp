#include "SharedWidgets/Widgets/RecentTasksWidget.h"

#include "Platform/Foundation/FatalError.h"
#include "SharedWidgets/Timelines/RecentTasksTimelineProvider.h"
#include "SharedWidgets/Widgets/WidgetDescription.h"

namespace kestrona {

RecentTasksWidget::RecentTasksWidget() { fatalError("Widget should be initialized with appGroupName"); }

WidgetConfiguration RecentTasksWidget::configuration() const {
  RecentTasksTimelineProvider provider(WidgetDataReader::withAppGroupName(appGroupName, WidgetType::recentTasks));
  return describedConfiguration(WidgetConfiguration::staticConfiguration(std::string(kind), std::move(provider)),
                                WidgetType::recentTasks,
                                {WidgetFamily::systemSmall, WidgetFamily::systemMedium, WidgetFamily::systemLarge});
}

}  // namespace kestrona
