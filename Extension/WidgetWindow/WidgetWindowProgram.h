// kestrona-widget-window: the widgets live on a Linux desktop.
//
// runWidgetWindow() reads the command line (WidgetWindowOptions.h) and the
// settings of the last run (WidgetWindowSettings.h, in the standard user
// defaults), opens GTK's display, and shows a WidgetWindow of the widgets
// chosen on the command line, else of those chosen last time, else of the
// defaults. It runs the main loop, with GLib's context pumped on it
// (GLibMainContextPump.h), until the window is closed or the process gets
// SIGTERM, SIGINT or SIGHUP; then it keeps the widgets and the window's size
// for the next run and answers 0.
//
// Exit status 2, with "kestrona-widget-window: <what was wrong>" on the
// error stream, for a command line it cannot read; 0 after --help, which
// prints the usage. Status 1, at once, when no display can be opened (no X11
// or Wayland display reachable: it never waits for one) or the widget files
// cannot be watched, with the reason on the error stream.
//
// Threading: the process's main thread, once.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "Extension/WidgetProcess/KestronaWidgets.h"

namespace kestrona {

int runWidgetWindow(const KestronaWidgets& bundle, const std::vector<std::string>& arguments, std::ostream& output,
                    std::ostream& errors);

}  // namespace kestrona
