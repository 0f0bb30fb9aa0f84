// A text measurer for layout tests: every character is half the font size
// wide and every line 1.2 times the font size high, and a width limit
// breaks lines after as many characters as fit. So the sizes a layout test
// expects can be worked out by hand.
#pragma once

#include "Platform/View/TextMeasurer.h"

namespace kestrona::testing {

class FixedWidthMeasurer final : public TextMeasurer {
 public:
  static constexpr double kAdvance = 0.5;
  static constexpr double kLineHeight = 1.2;

  TextMetrics measure(const TextMeasureRequest& request) const override;
};

}  // namespace kestrona::testing
