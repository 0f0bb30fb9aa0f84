// The bars of a chart widget, one per day, side by side, with a row of day
// labels under them in the medium and large families.
//
// ChartView takes all the space it is offered (width W, height H) and
// divides it by arithmetic:
//   - The gap factor r is 0.7 (weekly) or 0.3 (monthly) in the small
//     family, 0.5 or 0.2 in the others. With N bars each bar is
//     W / (N + r (N - 1)) wide and the gap between two bars is r times
//     that, so bars and gaps fill the width exactly.
//   - The scale is the greatest bar total, or minBarValue if that is not
//     less: time charts pass one hour, so a week of a few minutes does not
//     fill the height. A scale of 0 (an all-zero revenue chart) gives bars
//     of no height.
//   - A bar's column is its total divided by the scale, times the height
//     left above the label row (20 points in the medium and large families,
//     none in the small family). A negative total draws no column.
//   - Weekly bars show their total above the column; monthly bars do not.
//   - Each label is centred under its bar. Weekly labels are the very short
//     weekday symbols of the bars' dates ("M", "T"), monthly labels the day
//     of the month. Today's label is bold in the primary text colour, the
//     others in the secondary one. Where monthly labels would crowd, only
//     every few days are labelled, and never one that would touch today's.
//
// Dates are read in calendar, whose first weekday is set from
// firstDayOfWeek (1 is Sunday) when that lies in 1...7; today is the day of
// Date::now() in that calendar.
//
// Threading: a plain value; build its view on any thread. The formatter
// and the calendar are used while the view is laid out.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Platform/Time/Calendar.h"
#include "Platform/View/View.h"
#include "Platform/WidgetHost/WidgetFamily.h"
#include "SharedWidgets/Timelines/ChartBar.h"

namespace kestrona {

struct ChartView {
  enum class DateRangeType { weekly, monthly };

  std::vector<ChartBar> bars;
  std::int64_t firstDayOfWeek = 1;
  DateRangeType dateRangeType = DateRangeType::weekly;
  std::function<std::string(double)> valueFormatter;
  double minBarValue = 0;
  WidgetFamily family = WidgetFamily::systemMedium;
  Calendar calendar = Calendar::current();

  // The height of the label row in the medium and large families.
  static constexpr double kLabelRowHeight = 20;

  double gapFactor() const;
  double barWidth(double width) const;
  // The greatest bar total, at least minBarValue.
  double scale() const;
  // The height of the label row in this family.
  double labelRowHeight() const;
  // The labels under the bars, in bar order; an empty label leaves its bar
  // unlabelled.
  std::vector<std::string> labels(double width) const;

  // The bars and labels laid into size.
  View content(Size size) const;
  View body() const;

 private:
  Calendar weekCalendar() const;
};

}  // namespace kestrona
