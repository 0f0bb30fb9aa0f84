// What every widget of the bundle adds to its bare configuration: the
// gallery name and description of its WidgetType, its families in order,
// and drawing to the edges instead of inside the desktop's margins.
#pragma once

#include <vector>

#include "Platform/WidgetHost/WidgetConfiguration.h"
#include "WidgetData/Records/WidgetType.h"

namespace kestrona {

inline WidgetConfiguration describedConfiguration(const WidgetConfiguration& configuration, WidgetType type,
                                                  std::vector<WidgetFamily> families) {
  return configuration.configurationDisplayName(displayName(type))
      .withDescription(description(type))
      .withSupportedFamilies(std::move(families))
      .withContentMarginsDisabled();
}

}  // namespace kestrona
