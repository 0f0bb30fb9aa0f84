#include "Extension/WidgetWindow/WidgetArrangement.h"

#include <algorithm>

namespace kestrona {

std::vector<Rect> arrangeWidgets(const std::vector<Size>& sizes, double width, WidgetArrangementMetrics metrics) {
  std::vector<Rect> frames;
  frames.reserve(sizes.size());
  const double right = width - metrics.margin;
  double x = metrics.margin;
  double y = metrics.margin;
  double rowHeight = 0;
  for (const Size& size : sizes) {
    const bool rowHasWidgets = x > metrics.margin;
    if (rowHasWidgets && x + size.width > right) {
      x = metrics.margin;
      y += rowHeight + metrics.spacing;
      rowHeight = 0;
    }
    frames.push_back(Rect{{x, y}, size});
    x += size.width + metrics.spacing;
    rowHeight = std::max(rowHeight, size.height);
  }
  return frames;
}

Size arrangedSize(const std::vector<Size>& sizes, double width, WidgetArrangementMetrics metrics) {
  Size extent{0, 0};
  for (const Rect& frame : arrangeWidgets(sizes, width, metrics)) {
    extent.width = std::max(extent.width, frame.maxX());
    extent.height = std::max(extent.height, frame.maxY());
  }
  return Size{extent.width + metrics.margin, extent.height + metrics.margin};
}

double narrowestWidth(const std::vector<Size>& sizes, WidgetArrangementMetrics metrics) {
  double widest = 0;
  for (const Size& size : sizes) widest = std::max(widest, size.width);
  return widest + 2 * metrics.margin;
}

}  // namespace kestrona
