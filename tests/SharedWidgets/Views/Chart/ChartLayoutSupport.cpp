#include "tests/SharedWidgets/Views/Chart/ChartLayoutSupport.h"

#include <algorithm>

#include "Platform/Color/Color.h"
#include "Platform/Time/TimeZone.h"
#include "tests/Platform/View/FixedWidthMeasurer.h"

namespace kestrona::testing {

LayoutTree layOutForTest(const View& root, Size canvas) {
  static const FixedWidthMeasurer measurer;
  static const FontCatalog catalog({"Inter", "Quicksand"});
  return layout(root, canvas, measurer, catalog, LayoutEnvironment{});
}

Calendar utcCalendar() { return Calendar(TimeZone::gmt(), Locale("en_US")); }

Date utcDay(int year, int month, int day) {
  DateComponents components;
  components.year = year;
  components.month = month;
  components.day = day;
  return *utcCalendar().dateFromComponents(components);
}

ChartBar barWithSegments(Date date, const std::vector<double>& values) {
  ChartBar bar{date, {}, 0};
  for (std::size_t index = 0; index < values.size(); ++index) {
    const double shade = 0.3 + 0.1 * static_cast<double>(index % 7);
    bar.segments.push_back({"t" + std::to_string(index), Color::deviceRGB(shade, 0.4, 0.8, 1), values[index]});
    bar.totalValue += values[index];
  }
  return bar;
}

std::vector<const LaidOutNode*> columnsOf(const LayoutTree& tree) {
  std::vector<const LaidOutNode*> columns = tree.nodesOfKind(ViewKind::clip);
  std::stable_sort(columns.begin(), columns.end(),
                   [](const LaidOutNode* a, const LaidOutNode* b) { return a->frame.minX() < b->frame.minX(); });
  return columns;
}

}  // namespace kestrona::testing
