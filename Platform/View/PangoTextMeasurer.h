// Text measurement with Pango, the same way the renderer draws text.
//
// Texts are shaped in the resolved font at its size in points (one point
// per unit of the layout's space), wrapped at word boundaries (and inside a
// word when it alone is too wide), cut to the line limit, and truncated
// with an ellipsis by the truncation mode. Font metrics are not hinted, so
// sizes do not depend on the pixel scale a renderer later draws at.
//
// Threading: a measurer holds a Pango context of its own on the font map of
// the thread that made it (Pango keeps one font map per thread); use it on
// that thread only. Measurers made on several threads may work at once.
#pragma once

#include <memory>

#include "Platform/View/TextMeasurer.h"

namespace kestrona {

class PangoTextMeasurer final : public TextMeasurer {
 public:
  PangoTextMeasurer();
  ~PangoTextMeasurer() override;
  PangoTextMeasurer(const PangoTextMeasurer&) = delete;
  PangoTextMeasurer& operator=(const PangoTextMeasurer&) = delete;

  TextMetrics measure(const TextMeasureRequest& request) const override;

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

}  // namespace kestrona
