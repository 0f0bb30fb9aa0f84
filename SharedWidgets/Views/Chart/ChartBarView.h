// One day's column of a chart widget: the tasks of the day stacked in their
// colours, optionally with the day's total above.
//
// The column is columnHeight points high and width points wide. It draws
// columnRepresentationSegments(), not the bar's segments as they stand: a
// segment that would be thinner than kMinimumSegmentHeight points is not
// drawn on its own; all such segments merge into one light gray segment
// with the task identifier "OtherTasks" at the top of the column. The
// remaining segments are drawn in reverse order, the bar's last segment
// nearest the top. Neighbouring segments are parted by a one-point
// separator taken from the lower segment's height; the top segment has
// none. A negative segment, or a merged one that sums below zero, has no
// height. The column's top corners are rounded (cornerRadius()), and what
// would overflow it is clipped.
//
// The total, written by valueFormatter in small bold secondary text, stands
// above the column when displayTotalValue is set, the family is not small
// and the total is above 0. It sits in a frame wider than the column, so a
// long text never widens the bar.
//
// Threading: a plain value; build its view on any thread. valueFormatter
// is called while the view is built.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Platform/View/Shape.h"
#include "Platform/View/View.h"
#include "Platform/WidgetHost/WidgetFamily.h"
#include "SharedWidgets/Timelines/ChartBar.h"

namespace kestrona {

struct ChartBarView {
  ChartBar barData;
  double width = 0;
  double columnHeight = 0;
  bool displayTotalValue = false;
  std::function<std::string(double)> valueFormatter;
  WidgetFamily family = WidgetFamily::systemMedium;

  // The thinnest segment drawn on its own, in points.
  static constexpr double kMinimumSegmentHeight = 2.0;
  // The task identifier of the merged thin segments.
  static constexpr std::string_view kOtherTasksId = "OtherTasks";
  // The width of the frame that holds the total above the column.
  static constexpr double kTotalValueFrameWidth = 100;

  // A rectangle with the given corners rounded by radius.
  struct CornerRadiusShape {
    double radius = 0;
    RectCorner corners = RectCorner::allCorners;

    Shape shape() const { return Shape::cornerRadius(radius, corners); }
  };

  // The segments as drawn, from the top of the column down.
  std::vector<ChartBarSegment> columnRepresentationSegments() const;
  // The radius of the column's top corners: half the width in the small
  // family, at most 4 in the others.
  double cornerRadius() const;
  // The shape the column is clipped to.
  CornerRadiusShape columnShape() const;
  // The colour of the merged "OtherTasks" segment.
  static const Color& otherTasksColor();

  View body() const;
};

}  // namespace kestrona
