#include "SharedWidgets/Widgets/TimerWidget.h"

#include "Platform/Foundation/FatalError.h"
#include "SharedWidgets/Timelines/TimerWidgetTimelineProvider.h"
#include "SharedWidgets/Widgets/WidgetDescription.h"

namespace kestrona {

TimerWidget::TimerWidget() { fatalError("Widget should be initialized with appGroupName"); }

WidgetConfiguration TimerWidget::configuration() const {
  TimerWidgetTimelineProvider provider(WidgetDataReader::withAppGroupName(appGroupName, WidgetType::timer));
  return describedConfiguration(WidgetConfiguration::staticConfiguration(std::string(kind), std::move(provider)),
                                WidgetType::timer, {WidgetFamily::systemSmall, WidgetFamily::systemMedium});
}

}  // namespace kestrona
