// The widget bundle: the entry type of the widget process.
//
// Making a KestronaWidgets stores a new DeepLinkTimerWidgetIntentHost as
// the process's timer-intent host (TimerWidgetIntentHost::current()),
// releasing any earlier one, so it must be made before any widget or intent
// runs: the process's main makes it first. body() gives the configurations
// of the six widgets in the order of the gallery: timer, recent tasks, time
// tracked weekly and monthly, revenue weekly and monthly. Each call makes
// new providers, so a timer placeholder is dated when body() is called.
//
// The desktop this stands in for offers the recent tasks widget only from
// its version 14 on; every version of ours has it.
//
// A value; make it on the main thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/WidgetHost/WidgetConfiguration.h"

namespace kestrona {

struct KestronaWidgets {
  static constexpr std::string_view kAppGroupName = "Q7RM4XW2KD.app.kestrona.group";

  std::string appGroupName{kAppGroupName};

  KestronaWidgets();

  std::vector<WidgetConfiguration> body() const;
};

}  // namespace kestrona
