#include "Platform/View/PangoText.h"

#include <cmath>
#include <string>

namespace kestrona::pangotext {
namespace {

struct FontDescriptionDeleter {
  void operator()(PangoFontDescription* description) const { pango_font_description_free(description); }
};
struct AttributeListDeleter {
  void operator()(PangoAttrList* list) const { pango_attr_list_unref(list); }
};

PangoEllipsizeMode ellipsizeMode(TruncationMode mode) {
  switch (mode) {
    case TruncationMode::tail: return PANGO_ELLIPSIZE_END;
    case TruncationMode::head: return PANGO_ELLIPSIZE_START;
    case TruncationMode::middle: return PANGO_ELLIPSIZE_MIDDLE;
  }
  return PANGO_ELLIPSIZE_END;
}

int pangoUnits(double points) { return static_cast<int>(std::floor(points * PANGO_SCALE)); }

}  // namespace

void configureContext(PangoContext* context) {
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  pango_cairo_context_set_font_options(context, options);
  cairo_font_options_destroy(options);
  pango_context_set_round_glyph_positions(context, FALSE);
}

void configureLayout(PangoLayout* layout, const TextMeasureRequest& request) {
  std::unique_ptr<PangoFontDescription, FontDescriptionDeleter> description(pango_font_description_new());
  // A list of families: Pango draws each character in the first that has it.
  std::string families = request.font.family;
  for (const std::string& fallback : request.font.fallbackFamilies) families += "," + fallback;
  pango_font_description_set_family(description.get(), families.c_str());
  pango_font_description_set_absolute_size(description.get(), request.font.size * PANGO_SCALE);
  pango_font_description_set_weight(description.get(), static_cast<PangoWeight>(request.font.weight));
  pango_layout_set_font_description(layout, description.get());

  std::unique_ptr<PangoAttrList, AttributeListDeleter> attributes(pango_attr_list_new());
  if (request.font.monospacedDigit) {
    pango_attr_list_insert(attributes.get(), pango_attr_font_features_new("tnum"));
  }
  pango_layout_set_attributes(layout, attributes.get());

  pango_layout_set_text(layout, request.text.data(), static_cast<int>(request.text.size()));
  pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
  if (request.maxWidth && std::isfinite(*request.maxWidth)) {
    pango_layout_set_width(layout, std::max(0, pangoUnits(*request.maxWidth)));
    pango_layout_set_ellipsize(layout, ellipsizeMode(request.truncationMode));
    // A negative height is a number of lines: at most that many, the last
    // one ellipsized when text is left over. Without a limit, every line.
    pango_layout_set_height(layout, request.lineLimit ? -*request.lineLimit : -1000000);
  } else {
    pango_layout_set_width(layout, -1);
    pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_NONE);
  }
}

TextMetrics metricsOf(PangoLayout* layout) {
  PangoRectangle logical;
  pango_layout_get_extents(layout, nullptr, &logical);
  TextMetrics metrics;
  metrics.size =
      Size{static_cast<double>(logical.width) / PANGO_SCALE, static_cast<double>(logical.height) / PANGO_SCALE};
  metrics.lineCount = pango_layout_get_line_count(layout);
  metrics.isTruncated = pango_layout_is_ellipsized(layout);
  return metrics;
}

}  // namespace kestrona::pangotext
