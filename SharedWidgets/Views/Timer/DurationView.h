// The timer widget's duration: how long the time entry ran, or a live timer
// while it runs.
//
// Not running: the interval from begin to end, where an absent begin or end
// is the present moment (Date::now(), read once) and an end before the
// begin is the begin; so with neither date, or with an end that lies before
// the begin, the text is that of zero. It is written as hours, minutes and
// seconds ("1:02:05", "0:00:00").
// Running with a begin: a live timer counting up from begin, which the view
// layer shows as its value at the moment of drawing.
// Running without a begin: nothing is drawn (an empty view). A timer entry
// never asks for this: it runs only when it has a begin.
//
// The text is white, on one line, in the family's duration font, and may
// shrink to half its size to fit (TimerWidgetMetrics.h). On a row of its
// own (small family) it fills the row's width in the family's alignment.
// Under the button (medium family) it is as wide as its text, so the
// button's column is only as wide as the duration needs and the names
// beside it get the rest; the column sets it trailing.
//
// Threading: a plain value; body() may run on any thread.
#pragma once

#include <optional>

#include "Platform/Time/Date.h"
#include "Platform/View/View.h"
#include "Platform/WidgetHost/WidgetFamily.h"

namespace kestrona {

struct DurationView {
  WidgetFamily family = WidgetFamily::systemSmall;
  bool isRunning = false;
  std::optional<Date> begin;
  std::optional<Date> end;

  View body() const;
};

}  // namespace kestrona
