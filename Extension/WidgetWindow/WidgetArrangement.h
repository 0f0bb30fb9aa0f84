// Where the widgets of the window stand: a flow, as on a desktop.
//
// The widgets keep their family's size. They are placed left to right in
// the order chosen, a margin from the window's edges and a spacing apart,
// top-aligned in their row; a widget that would pass the right margin
// starts a new row, below the tallest widget of the row before. A widget
// wider than the room there is still gets a row of its own (it is cut off
// at the right, never shrunk). So a window one widget wide shows a column,
// and a wide one a few rows.
//
// arrangeWidgets() gives each widget's frame, in points from the top-left
// corner of the window's content, for a content width; arrangedSize() the
// content size those frames need (their extent plus the margin), which is
// what the window asks for at that width.
//
// Threading: plain functions; any thread.
#pragma once

#include <vector>

#include "Platform/View/Geometry.h"

namespace kestrona {

struct WidgetArrangementMetrics {
  double margin = 16;
  double spacing = 16;
};

std::vector<Rect> arrangeWidgets(const std::vector<Size>& sizes, double width, WidgetArrangementMetrics metrics = {});

Size arrangedSize(const std::vector<Size>& sizes, double width, WidgetArrangementMetrics metrics = {});

// The least content width that shows every widget whole: the widest one
// and the margins on both sides.
double narrowestWidth(const std::vector<Size>& sizes, WidgetArrangementMetrics metrics = {});

}  // namespace kestrona
