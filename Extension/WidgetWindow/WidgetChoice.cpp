#include "Extension/WidgetWindow/WidgetChoice.h"

namespace kestrona {

std::vector<WidgetChoice> defaultWidgetChoices() {
  return {
      {"timer", WidgetFamily::systemMedium},
      {"recentTasks", WidgetFamily::systemMedium},
      {"weeklyTimeTrackedChart", WidgetFamily::systemMedium},
  };
}

}  // namespace kestrona
