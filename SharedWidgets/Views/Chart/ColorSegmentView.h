// One task's share of a chart column: its colour, segmentHeight points
// high. With addSeparator the segment starts with a transparent strip one
// point high and shows its colour in the rest, so the separator is taken
// from the segment's own height and the column keeps its total height.
//
// Threading: a plain value; build its view on any thread.
#pragma once

#include "Platform/View/View.h"
#include "SharedWidgets/Timelines/ChartBar.h"

namespace kestrona {

struct ColorSegmentView {
  ChartBarSegment segmentData;
  double segmentHeight = 0;
  bool addSeparator = false;

  // The height of the separator strip.
  static constexpr double kSeparatorHeight = 1;

  View body() const;
};

}  // namespace kestrona
