#include "Platform/View/TemplateImage.h"

namespace kestrona {

TemplateSymbolOutline templateSymbolOutline(TemplateSymbol symbol, double edge) {
  TemplateSymbolOutline outline;
  switch (symbol) {
    case TemplateSymbol::play: {
      // An equilateral-looking triangle whose centroid, not its bounding
      // box, sits on the centre: a play sign boxed in the middle looks
      // pushed to the left. Half the edge high, so that the sign grown
      // fivefold behind a running timer's pause sign covers the whole round
      // button, even when set off the centre by a leading inset, instead of
      // leaving a sliver of the button's own colour at its side.
      const double height = edge * 0.5;
      const double width = height * 0.9;
      const double centroidX = edge / 2;
      const double left = centroidX - width / 3;
      const double top = (edge - height) / 2;
      outline.polygons.push_back({{left, top}, {left + width, edge / 2}, {left, top + height}});
      outline.cornerRadius = edge * 0.04;
      break;
    }
    case TemplateSymbol::pause: {
      const double height = edge * 0.5;
      const double barWidth = edge * 0.12;
      const double gap = edge * 0.1;
      const double top = (edge - height) / 2;
      const double left = (edge - 2 * barWidth - gap) / 2;
      for (double x : {left, left + barWidth + gap}) {
        outline.polygons.push_back({{x, top}, {x + barWidth, top}, {x + barWidth, top + height}, {x, top + height}});
      }
      outline.cornerRadius = barWidth * 0.35;
      break;
    }
    case TemplateSymbol::smallPlay: {
      const double height = edge;
      const double width = edge * 10.0 / 12.0;
      const double left = (edge - width) / 2;
      outline.polygons.push_back({{left, 0}, {left + width, height / 2}, {left, height}});
      outline.cornerRadius = edge * 0.1;
      break;
    }
  }
  return outline;
}

double naturalEdge(TemplateSymbol symbol) {
  switch (symbol) {
    case TemplateSymbol::play:
    case TemplateSymbol::pause: return 36;
    case TemplateSymbol::smallPlay: return 12;
  }
  return 12;
}

std::string_view templateSymbolName(TemplateSymbol symbol) {
  switch (symbol) {
    case TemplateSymbol::play: return "play";
    case TemplateSymbol::pause: return "pause";
    case TemplateSymbol::smallPlay: return "smallPlay";
  }
  return "?";
}

}  // namespace kestrona
