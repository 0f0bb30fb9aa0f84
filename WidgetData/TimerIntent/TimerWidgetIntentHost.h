// The process's one timer-intent host.
//
// current() is the host that timer intents hand their commands to: empty at
// process start, set once by the widget bundle as it starts, and kept for the
// life of the process. setCurrent() replaces it and releases the previous
// one. There is exactly one slot per process.
//
// Threading: written before the first intent can run and read on the main
// loop; the slot is guarded anyway, so a late write never tears a read.
#pragma once

#include <memory>

#include "WidgetData/TimerIntent/TimerWidgetIntentHosting.h"

namespace kestrona {

class TimerWidgetIntentHost {
 public:
  TimerWidgetIntentHost() = delete;

  static std::shared_ptr<TimerWidgetIntentHosting> current();
  static void setCurrent(std::shared_ptr<TimerWidgetIntentHosting> host);
};

}  // namespace kestrona
