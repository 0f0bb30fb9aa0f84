// Internal to the view layer: how a text request becomes a Pango layout,
// shared by the measurer and the renderer so that both lay text out alike.
// Included only by .cpp files of Platform/View.
#pragma once

#include <pango/pangocairo.h>

#include <memory>

#include "Platform/View/TextMeasurer.h"

namespace kestrona::pangotext {

struct LayoutDeleter {
  void operator()(PangoLayout* layout) const { g_object_unref(layout); }
};
using LayoutPointer = std::unique_ptr<PangoLayout, LayoutDeleter>;

// Font options that keep metrics independent of the pixel grid.
void configureContext(PangoContext* context);

// Fills layout with request's text, font, width, line limit and truncation.
void configureLayout(PangoLayout* layout, const TextMeasureRequest& request);

// The size of layout in points, its line count and whether it was truncated.
TextMetrics metricsOf(PangoLayout* layout);

}  // namespace kestrona::pangotext
