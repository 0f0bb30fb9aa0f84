// The period a chart widget covers. `daily` is declared for completeness and
// used by no widget; a provider given it refreshes at the end of each day.
#pragma once

namespace kestrona {

enum class WidgetDateRangeType {
  daily,
  weekly,
  monthly,
};

}  // namespace kestrona
