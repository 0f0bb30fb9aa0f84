// Shapes that fill, frame and clip views: rectangles, rectangles with all or
// some corners rounded, circles and capsules.
//
// A shape has no size of its own: it is laid into the rectangle of the view
// it fills or clips. A corner radius larger than half the shorter side of
// that rectangle is reduced to it, so a rounded rectangle never folds over
// itself. A circle is the largest circle centred in the rectangle; a capsule
// rounds the shorter sides completely.
//
// Continuous corners bend gradually into the straight edges instead of
// meeting them at a quarter circle, and so start a little further from the
// corner; their radius means the same as a circular one's.
//
// Threading: a plain value; any thread.
#pragma once

#include <cstdint>

#include "Platform/View/Geometry.h"

namespace kestrona {

enum class RectCorner : std::uint8_t {
  topLeft = 1,
  topRight = 2,
  bottomLeft = 4,
  bottomRight = 8,
  allCorners = 15,
};

constexpr RectCorner operator|(RectCorner lhs, RectCorner rhs) {
  return static_cast<RectCorner>(static_cast<std::uint8_t>(lhs) | static_cast<std::uint8_t>(rhs));
}
constexpr bool contains(RectCorner set, RectCorner corner) {
  return (static_cast<std::uint8_t>(set) & static_cast<std::uint8_t>(corner)) != 0;
}

enum class RoundedCornerStyle { circular, continuous };

class Shape {
 public:
  enum class Kind { rectangle, roundedRectangle, circle, capsule };

  static Shape rectangle() { return Shape(Kind::rectangle, 0, RectCorner::allCorners, RoundedCornerStyle::circular); }
  // A rectangle with every corner rounded by radius.
  static Shape roundedRectangle(double radius, RoundedCornerStyle style = RoundedCornerStyle::circular) {
    return Shape(Kind::roundedRectangle, radius, RectCorner::allCorners, style);
  }
  // A rectangle with only the given corners rounded by radius.
  static Shape cornerRadius(double radius, RectCorner corners) {
    return Shape(Kind::roundedRectangle, radius, corners, RoundedCornerStyle::circular);
  }
  static Shape circle() { return Shape(Kind::circle, 0, RectCorner::allCorners, RoundedCornerStyle::circular); }
  static Shape capsule() { return Shape(Kind::capsule, 0, RectCorner::allCorners, RoundedCornerStyle::circular); }

  Kind kind() const noexcept { return kind_; }
  double cornerRadius() const noexcept { return radius_; }
  RectCorner corners() const noexcept { return corners_; }
  RoundedCornerStyle style() const noexcept { return style_; }

  // The radius of each rounded corner when the shape lies in rect: the
  // stated radius, at most half the shorter side; for a circle or capsule
  // half the shorter side; 0 for a plain rectangle.
  double effectiveRadius(const Rect& rect) const;

  // Whether point lies inside the shape laid into rect.
  bool contains(const Rect& rect, Point point) const;

  friend bool operator==(const Shape&, const Shape&) = default;

 private:
  Shape(Kind kind, double radius, RectCorner corners, RoundedCornerStyle style)
      : kind_(kind), radius_(radius), corners_(corners), style_(style) {}

  Kind kind_;
  double radius_;
  RectCorner corners_;
  RoundedCornerStyle style_;
};

}  // namespace kestrona
