// The one view of the four chart widgets (time tracked and revenue, each
// weekly and monthly): the period's total, its daily average and a chart
// of bars per day.
//
// In the medium and large families the totals stand in a column on the
// left, with the chart to their right; in the small family the column
// holds only the total, under the short title, with the chart below it.
// The chart uses chartValueFormatter when there is one and
// totalValueFormatter otherwise. The widget fills its canvas with the
// widget background colour (black; widgets are drawn in the dark scheme)
// and links to widgetURL when it has one.
//
// primaryValue is chartTotalValue() of the bars and secondaryValue their
// chartDailyAverage(). The forTimeTracked and forRevenue factories fill
// every field the way the four widgets do.
//
// Threading: a plain value; build its view on any thread. The formatters
// are used while the view is built and laid out.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Time/Calendar.h"
#include "Platform/URL/URL.h"
#include "Platform/View/View.h"
#include "Platform/WidgetHost/WidgetFamily.h"
#include "SharedWidgets/Timelines/ChartBar.h"
#include "SharedWidgets/Timelines/RevenueWidgetEntry.h"
#include "SharedWidgets/Timelines/TimeTrackedWidgetEntry.h"
#include "SharedWidgets/Views/Chart/ChartView.h"

namespace kestrona {

// The sum of the bars' totals; 0 with no bars.
double chartTotalValue(const std::vector<ChartBar>& bars);
// The total divided by the number of days with a total above 0, so days
// with nothing tracked do not lower it; 0 when there are none.
double chartDailyAverage(const std::vector<ChartBar>& bars);

struct ChartWidgetView {
  ChartView::DateRangeType dateRangeType = ChartView::DateRangeType::weekly;
  std::int64_t firstDayOfWeek = 1;
  std::vector<ChartBar> chartBars;
  std::string primaryTitle;
  std::string smallPrimaryTitle;
  double primaryValue = 0;
  std::string secondaryTitle;
  double secondaryValue = 0;
  std::function<std::string(double)> totalValueFormatter;
  std::optional<std::function<std::string(double)>> chartValueFormatter;
  double minBarValue = 0;
  std::optional<URL> widgetURL;
  WidgetFamily family = WidgetFamily::systemMedium;
  // The calendar the chart reads its dates in.
  Calendar calendar = Calendar::current();

  // The padding between the widget's edge and its content.
  static constexpr double kContentMargin = 16;
  // The padding of the chart above and to the leading side in the medium
  // family; the top one leaves room for the total over the highest bar.
  static constexpr double kChartPadding = 20;

  // The time tracked widgets: totals as hours and minutes ("12:05"), a
  // scale of at least one hour.
  static ChartWidgetView forTimeTracked(const TimeTrackedWidgetEntry& entry, ChartView::DateRangeType dateRangeType,
                                        WidgetFamily family, Calendar calendar = Calendar::current());
  // The revenue widgets: totals as compact currency in the entry's
  // currency locale, or, when that locale has no currency (an empty or
  // unknown identifier), in the system's locale for money (LC_ALL,
  // LC_MONETARY, LANG), or, when neither has one, as plain numbers; bars
  // as compact numbers (weekly) or plain numbers (monthly) in the entry's
  // locale.
  static ChartWidgetView forRevenue(const RevenueWidgetEntry& entry, ChartView::DateRangeType dateRangeType,
                                    WidgetFamily family, Calendar calendar = Calendar::current());

  ChartView chartView() const;
  View content() const;
  View body() const;
};

}  // namespace kestrona
