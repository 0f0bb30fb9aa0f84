// Timeline entries and timelines as JSON, for people and scripts.
//
// An entry is an object with "date" and then its fields under their own
// names, in declared order: colours as objects of "redComponent",
// "greenComponent", "blueComponent" and "alphaComponent" (device RGB),
// dates as seconds since 1970, absent optionals left out. The timer entry
// adds "isTimerRunning". A policy is {"type": "never" | "atEnd" | "after"}
// with "date" for after.
//
// entryJSON() knows the four entry types of the widgets; any other is a
// programming error and ends the process. Pure functions; thread-safe.
#pragma once

#include <nlohmann/json.hpp>

#include "Platform/WidgetHost/WidgetConfiguration.h"

namespace kestrona {

nlohmann::ordered_json entryJSON(const AnyTimelineEntry& entry);
nlohmann::ordered_json policyJSON(const TimelineReloadPolicy& policy);

}  // namespace kestrona
