// The seam through which layout learns how large a text is.
//
// Layout asks a TextMeasurer for the size of a text in a resolved font,
// within a width (or unbounded), in at most some lines, truncated by a
// mode when it does not fit. The measurer answers with the size of what
// it would draw, the number of lines, and whether anything was cut off.
// PangoTextMeasurer (PangoTextMeasurer.h) is the real one, and the renderer
// lays text out by the same rules, so that what is measured is what is
// drawn. Tests of layout logic may give a measurer of their own.
//
// Threading: see each implementation.
#pragma once

#include <optional>
#include <string_view>

#include "Platform/View/FontCatalog.h"
#include "Platform/View/Geometry.h"
#include "Platform/View/View.h"

namespace kestrona {

struct TextMeasureRequest {
  std::string_view text;
  ResolvedFont font;
  // The widest the text may be; none lays it out on one line per paragraph.
  std::optional<double> maxWidth;
  std::optional<int> lineLimit;
  TruncationMode truncationMode = TruncationMode::tail;
};

struct TextMetrics {
  Size size;
  int lineCount = 0;
  // Whether lines or characters were left out to fit.
  bool isTruncated = false;

  friend bool operator==(const TextMetrics&, const TextMetrics&) = default;
};

class TextMeasurer {
 public:
  virtual ~TextMeasurer() = default;
  virtual TextMetrics measure(const TextMeasureRequest& request) const = 0;
};

}  // namespace kestrona
