// Template images: icons drawn as vector shapes in one tint colour.
//
// The widgets' icons are a play triangle, a pause sign and the plates' small
// play triangle. Each is drawn from shapes, so it is crisp at every pixel
// scale; the tint colour is given by the view (a template image has no
// colour of its own). An image has a fixed square size in points, its edge
// length, and draws its sign inside that square:
//   play: a triangle with rounded corners pointing right, 50% of the edge
//     high and 45% wide, its centroid on the square's centre;
//   pause: two upright bars with rounded ends, 40% of the edge high;
//   smallPlay: a triangle with rounded corners filling 10 x 12 of a 12-point
//     square (its natural edge), as the plates' small play sign.
//
// Threading: plain values; any thread.
#pragma once

#include <string_view>
#include <vector>

#include "Platform/View/Geometry.h"

namespace kestrona {

enum class TemplateSymbol { play, pause, smallPlay };

// The sign's parts in points, for a square of edge length edge placed at the
// origin: closed polygons (each a list of corners, rounded by cornerRadius
// when drawn). The renderer draws them; hit testing and tests read them.
struct TemplateSymbolOutline {
  std::vector<std::vector<Point>> polygons;
  double cornerRadius = 0;
};

TemplateSymbolOutline templateSymbolOutline(TemplateSymbol symbol, double edge);

// The natural edge length of symbol, when a view gives none.
double naturalEdge(TemplateSymbol symbol);

std::string_view templateSymbolName(TemplateSymbol symbol);

}  // namespace kestrona
