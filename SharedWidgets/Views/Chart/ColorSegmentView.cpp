#include "SharedWidgets/Views/Chart/ColorSegmentView.h"

#include <algorithm>

namespace kestrona {

View ColorSegmentView::body() const {
  if (!addSeparator) return ColorFill(segmentData.color).frame(std::nullopt, std::max(0.0, segmentHeight));
  const double colourHeight = std::max(0.0, segmentHeight - kSeparatorHeight);
  return VStack(HorizontalAlignment::center, 0,
                {
                    ColorFill(Color::deviceRGB(0, 0, 0, 0)).frame(std::nullopt, kSeparatorHeight),
                    ColorFill(segmentData.color).frame(std::nullopt, colourHeight),
                });
}

}  // namespace kestrona
