// The intents package of the widget process: it includes exactly the
// widget-data package, where the timer intent lives.
#pragma once

#include "Platform/Intents/AppIntentsPackage.h"
#include "WidgetData/TimerIntent/WidgetDataPackage.h"

namespace kestrona {

struct KestronaWidgetsPackage {
  using includedPackages = IncludedPackages<WidgetDataPackage>;
};

static_assert(AppIntentsPackage<KestronaWidgetsPackage>);
static_assert(includesPackage<KestronaWidgetsPackage, WidgetDataPackage>);
static_assert(!includesPackage<WidgetDataPackage, KestronaWidgetsPackage>);

}  // namespace kestrona
