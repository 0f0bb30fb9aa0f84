#include "Platform/View/Font.h"

#include <cmath>

#include "Platform/Foundation/FatalError.h"

namespace kestrona {

Font Font::system(double size, Weight weight, Design design) {
  precondition(size > 0 && std::isfinite(size), "A font size must be positive and finite");
  return Font(size, weight, design);
}

Font Font::withWeight(Weight weight) const {
  Font copy = *this;
  copy.weight_ = weight;
  return copy;
}

Font Font::monospacedDigit() const {
  Font copy = *this;
  copy.monospacedDigit_ = true;
  return copy;
}

}  // namespace kestrona
