#include "tests/Platform/View/FixedWidthMeasurer.h"

#include <algorithm>
#include <cmath>

namespace kestrona::testing {

TextMetrics FixedWidthMeasurer::measure(const TextMeasureRequest& request) const {
  // Characters, not bytes: count the bytes that start a UTF-8 sequence.
  const auto characters = static_cast<double>(std::count_if(request.text.begin(), request.text.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
  }));
  const double advance = request.font.size * kAdvance;
  const double lineHeight = request.font.size * kLineHeight;
  if (characters == 0) return TextMetrics{Size{0, lineHeight}, 1, false};
  if (!request.maxWidth) return TextMetrics{Size{characters * advance, lineHeight}, 1, false};

  // A small tolerance, as a real measurer rounds to its own units.
  const double perLine = std::max(1.0, std::floor((*request.maxWidth + 1e-9) / advance));
  int lines = static_cast<int>(std::ceil(characters / perLine));
  bool truncated = false;
  if (request.lineLimit && lines > *request.lineLimit) {
    lines = *request.lineLimit;
    truncated = true;
  }
  const double width = std::min(characters, perLine) * advance;
  return TextMetrics{Size{width, lines * lineHeight}, lines, truncated};
}

}  // namespace kestrona::testing
