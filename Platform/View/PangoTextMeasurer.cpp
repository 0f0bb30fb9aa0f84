#include "Platform/View/PangoTextMeasurer.h"

#include "Platform/View/PangoText.h"

namespace kestrona {

struct PangoTextMeasurer::Context {
  PangoFontMap* fontMap = nullptr;  // not owned: the process's default map
  PangoContext* pango = nullptr;
};

PangoTextMeasurer::PangoTextMeasurer() : context_(std::make_unique<Context>()) {
  context_->fontMap = pango_cairo_font_map_get_default();
  context_->pango = pango_font_map_create_context(context_->fontMap);
  pangotext::configureContext(context_->pango);
}

PangoTextMeasurer::~PangoTextMeasurer() { g_object_unref(context_->pango); }

TextMetrics PangoTextMeasurer::measure(const TextMeasureRequest& request) const {
  pangotext::LayoutPointer layout(pango_layout_new(context_->pango));
  pangotext::configureLayout(layout.get(), request);
  return pangotext::metricsOf(layout.get());
}

}  // namespace kestrona
