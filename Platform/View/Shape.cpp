#include "Platform/View/Shape.h"

#include <algorithm>
#include <cmath>

namespace kestrona {

double Shape::effectiveRadius(const Rect& rect) const {
  const double limit = std::max(0.0, std::min(rect.width(), rect.height()) / 2);
  switch (kind_) {
    case Kind::rectangle: return 0;
    case Kind::roundedRectangle: return std::clamp(radius_, 0.0, limit);
    case Kind::circle:
    case Kind::capsule: return limit;
  }
  return 0;
}

bool Shape::contains(const Rect& rect, Point point) const {
  if (kind_ == Kind::circle) {
    const double radius = effectiveRadius(rect);
    return std::hypot(point.x - rect.midX(), point.y - rect.midY()) <= radius;
  }
  if (!rect.contains(point)) return false;
  const double radius = effectiveRadius(rect);
  if (radius <= 0) return true;
  // Inside unless the point lies in a rounded corner's square, outside its arc.
  const bool left = point.x < rect.minX() + radius;
  const bool right = point.x > rect.maxX() - radius;
  const bool top = point.y < rect.minY() + radius;
  const bool bottom = point.y > rect.maxY() - radius;
  const RectCorner rounded = kind_ == Kind::roundedRectangle ? corners_ : RectCorner::allCorners;
  auto outsideArc = [&](double centreX, double centreY) {
    return std::hypot(point.x - centreX, point.y - centreY) > radius;
  };
  if (top && left && kestrona::contains(rounded, RectCorner::topLeft))
    return !outsideArc(rect.minX() + radius, rect.minY() + radius);
  if (top && right && kestrona::contains(rounded, RectCorner::topRight))
    return !outsideArc(rect.maxX() - radius, rect.minY() + radius);
  if (bottom && left && kestrona::contains(rounded, RectCorner::bottomLeft))
    return !outsideArc(rect.minX() + radius, rect.maxY() - radius);
  if (bottom && right && kestrona::contains(rounded, RectCorner::bottomRight))
    return !outsideArc(rect.maxX() - radius, rect.maxY() - radius);
  return true;
}

}  // namespace kestrona
