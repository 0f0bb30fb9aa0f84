#include "SharedWidgets/Views/Chart/ChartBarView.h"

#include <algorithm>

#include "SharedCore/Support/Colors/NamedColors.h"
#include "SharedWidgets/Views/Chart/ColorSegmentView.h"

namespace kestrona {

const Color& ChartBarView::otherTasksColor() {
  // The system's light gray: two thirds white.
  static const Color color = Color::deviceRGB(2.0 / 3, 2.0 / 3, 2.0 / 3, 1);
  return color;
}

std::vector<ChartBarSegment> ChartBarView::columnRepresentationSegments() const {
  std::vector<ChartBarSegment> segments;
  double mergedValue = 0;
  for (auto segment = barData.segments.rbegin(); segment != barData.segments.rend(); ++segment) {
    if (barData.totalValue > 0 && segment->value / barData.totalValue * columnHeight >= kMinimumSegmentHeight) {
      segments.push_back(*segment);
    } else {
      mergedValue += segment->value;
    }
  }
  if (mergedValue != 0) {
    segments.insert(segments.begin(), ChartBarSegment{std::string(kOtherTasksId), otherTasksColor(), mergedValue});
  }
  return segments;
}

double ChartBarView::cornerRadius() const {
  switch (family) {
    case WidgetFamily::systemSmall: return width / 2;
    case WidgetFamily::systemMedium:
    case WidgetFamily::systemLarge: return std::min(4.0, width / 2);
  }
  return 4;
}

ChartBarView::CornerRadiusShape ChartBarView::columnShape() const {
  return {cornerRadius(), RectCorner::topLeft | RectCorner::topRight};
}

View ChartBarView::body() const {
  std::vector<View> column;
  const std::vector<ChartBarSegment> segments = columnRepresentationSegments();
  column.reserve(segments.size());
  for (std::size_t index = 0; index < segments.size(); ++index) {
    const double height =
        barData.totalValue > 0 ? std::max(0.0, segments[index].value / barData.totalValue * columnHeight) : 0;
    column.push_back(ColorSegmentView{segments[index], height, index > 0}.body());
  }
  const View columnView =
      VStack(HorizontalAlignment::center, 0, std::move(column))
          .frame(width, columnHeight, Alignment::bottom())
          .clipShape(columnShape().shape());

  const bool showsTotal =
      displayTotalValue && family != WidgetFamily::systemSmall && barData.totalValue > 0 && valueFormatter;
  if (!showsTotal) return columnView;

  const View total = Text(valueFormatter(barData.totalValue))
                         .font(Font::system(8, Font::Weight::bold))
                         .foregroundColor(NamedColors::secondaryLabel())
                         .lineLimit(1)
                         .padding(Edge::bottom, 2)
                         .frame(kTotalValueFrameWidth, std::nullopt);
  return VStack(HorizontalAlignment::center, 0, {total, columnView});
}

}  // namespace kestrona
