// Choosing a widget of the bundle and one of its families by name, as a
// command line names them.
//
// widgetOfKind() finds the widget whose kind is kind; familyOfWidget() reads
// a family's raw value ("systemSmall", "systemMedium", "systemLarge") and
// requires the widget to offer it. Both throw CommandLineError: unknownKind
// (naming the kinds there are), unknownFamily, unsupportedFamily.
//
// Threading: plain functions; any thread.
#pragma once

#include <string_view>
#include <vector>

#include "Platform/WidgetHost/WidgetConfiguration.h"
#include "Platform/WidgetHost/WidgetFamily.h"

namespace kestrona {

const WidgetConfiguration& widgetOfKind(const std::vector<WidgetConfiguration>& widgets, std::string_view kind);

WidgetFamily familyOfWidget(const WidgetConfiguration& widget, std::string_view name);

}  // namespace kestrona
