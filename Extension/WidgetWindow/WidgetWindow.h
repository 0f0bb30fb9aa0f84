// The window on the desktop that shows a WidgetBoard live, in GTK 4.
//
// Each placement is a drawing area of its family's size in points, drawn
// through the view layer straight onto the window's Cairo surface at the
// screen's scale. The areas flow as WidgetArrangement says, inside a
// vertically scrolling view, and flow again when the window is resized.
// When the board says a placement changed, only that area is redrawn.
//
// The board is kept up to date on the main loop: a loop timer for its next
// update, and a GLib watch on the file monitor's descriptor, so a rewritten
// widget file shows as soon as its writer closes it.
//
// Input, as a person expects of a desktop widget:
//   - a click (on release, where the press began) presses the widget there
//     through a WidgetPresser: a button or plate runs its intent (a deep
//     link to the application); elsewhere the widget's link is followed,
//     opened at the containing application, which may come forward;
//   - Tab and Shift+Tab move the keyboard's focus among the buttons of all
//     widgets (a ring shows it), Enter or Space presses the focused button,
//     Escape hides the focus.
//
// The window's background and focus ring follow GTK's light or dark
// preference (WindowAppearance.h), and change with it.
//
// Events are written to events, one JSON object per line, flushed:
//   {"event": "arranged", "scale", "widgets": [{"kind", "family", "x", "y",
//    "width", "height"}]}      after the widgets were drawn where they now
//                              stand: points from the window surface's
//                              top-left corner, and the surface's pixels
//                              per point
//   {"event": "pressed", "kind", "family", "x", "y", ...}
//                              a press, with pressOutcomeJSON()'s fields
//   {"event": "opened", "url", "result": "performed" | "failed", "error"}
//                              a followed link
//
// closeRequested() is called when the user closes the window (or the
// process is asked to end); the owner then stops the loop and destroys the
// window. windowSize() is the size to keep for the next run.
//
// Threading: GTK's thread, which runs the main loop and the GLib pump;
// gtk_init must have succeeded. The loop and the board's monitor must
// outlive the window.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <vector>

#include "Extension/WidgetWindow/WidgetBoard.h"
#include "Platform/RunLoop/MainLoop.h"
#include "Platform/View/Geometry.h"
#include "Platform/WidgetHost/InotifyFileChangeMonitor.h"

namespace kestrona {

class WidgetWindow {
 public:
  struct Configuration {
    std::vector<WidgetConfiguration> bundle;
    std::vector<WidgetChoice> widgets;
    // The window's size in points; none for one that fits the widgets.
    std::optional<Size> size;
    // The folder of the widget files; none when there is no group container.
    std::optional<std::filesystem::path> widgetDirectory;
  };

  // Throws FileChangeMonitorError when the widget files cannot be watched.
  WidgetWindow(MainLoop& loop, Configuration configuration, std::ostream& events,
               std::function<void()> closeRequested);
  ~WidgetWindow();
  WidgetWindow(const WidgetWindow&) = delete;
  WidgetWindow& operator=(const WidgetWindow&) = delete;

  void present();
  Size windowSize() const;

  // Internal; public so that GTK's callbacks in the source file can name it.
  struct Parts;

 private:
  std::unique_ptr<Parts> parts_;
};

}  // namespace kestrona
