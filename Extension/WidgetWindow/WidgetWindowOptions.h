// The command line of kestrona-widget-window.
//
//   kestrona-widget-window [--kind KIND [--family F]]...
//   kestrona-widget-window --help
//
// Each --kind adds a widget of the bundle to the window, in the order
// given; the --family after it chooses its family (the widget's first
// family without one). Both take "--name value" or "--name=value". With no
// --kind the window shows what was chosen last time (WidgetWindowSettings).
//
// parseWidgetWindowOptions() throws CommandLineError for what it can't read:
// an unknown argument, a --family before any --kind or twice for one, a
// missing value, an unknown kind or family, a family the widget lacks.
// widgetWindowUsage() is the text --help prints.
//
// Threading: plain functions; any thread.
#pragma once

#include <string>
#include <vector>

#include "Extension/WidgetWindow/WidgetChoice.h"
#include "Platform/WidgetHost/WidgetConfiguration.h"

namespace kestrona {

struct WidgetWindowOptions {
  std::vector<WidgetChoice> widgets;
  bool help = false;
};

WidgetWindowOptions parseWidgetWindowOptions(const std::vector<std::string>& arguments,
                                             const std::vector<WidgetConfiguration>& widgets);

std::string widgetWindowUsage();

}  // namespace kestrona
