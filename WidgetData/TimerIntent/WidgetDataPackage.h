// The intents package of the widget-data module: it declares that the timer
// intent's types live here, and includes no other package.
#pragma once

#include "Platform/Intents/AppIntentsPackage.h"

namespace kestrona {

struct WidgetDataPackage {
  using includedPackages = IncludedPackages<>;
};

static_assert(AppIntentsPackage<WidgetDataPackage>);

}  // namespace kestrona
