// A title over a value, the way the chart widgets show their total and
// daily average: the label small and bold in the secondary text colour,
// the value large in the primary text colour, both leading-aligned.
// lineLimit, when present, limits each of the two texts.
//
// Threading: a plain value; build its view on any thread.
#pragma once

#include <optional>
#include <string>

#include "Platform/View/View.h"

namespace kestrona {

struct LabeledValueView {
  std::string labelText;
  std::string valueText;
  std::optional<int> lineLimit;

  View body() const;
};

}  // namespace kestrona
