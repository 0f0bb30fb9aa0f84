// Points, sizes, rectangles, insets and size proposals of the view layer.
//
// All lengths are in points, with the origin at the top-left corner and y
// growing downwards, as a drawing surface has it. A renderer multiplies by
// its pixel scale; layout never sees pixels.
//
// A ProposedSize is what a parent offers a child along each axis: a finite
// length, infinity ("take as much as you like"), or none ("tell me your
// ideal size"). A child answers with a Size that it chooses itself; the
// parent then places it.
//
// Threading: plain values; any thread.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

namespace kestrona {

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Point {
  double x = 0;
  double y = 0;

  friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
  double width = 0;
  double height = 0;

  friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
  Point origin;
  Size size;

  double minX() const noexcept { return origin.x; }
  double minY() const noexcept { return origin.y; }
  double maxX() const noexcept { return origin.x + size.width; }
  double maxY() const noexcept { return origin.y + size.height; }
  double midX() const noexcept { return origin.x + size.width / 2; }
  double midY() const noexcept { return origin.y + size.height / 2; }
  double width() const noexcept { return size.width; }
  double height() const noexcept { return size.height; }

  // Whether point lies inside; the right and bottom edges are outside, so
  // that neighbouring rectangles never both hold a point.
  bool contains(Point point) const noexcept {
    return point.x >= minX() && point.x < maxX() && point.y >= minY() && point.y < maxY();
  }

  friend bool operator==(const Rect&, const Rect&) = default;
};

// Distances inwards from each edge.
struct EdgeInsets {
  double top = 0;
  double leading = 0;
  double bottom = 0;
  double trailing = 0;

  static constexpr EdgeInsets all(double length) { return {length, length, length, length}; }

  double horizontal() const noexcept { return leading + trailing; }
  double vertical() const noexcept { return top + bottom; }

  friend bool operator==(const EdgeInsets&, const EdgeInsets&) = default;
};

// A set of edges, for modifiers that act on some edges only
// (padding(Edge::top | Edge::leading, 3)).
enum class Edge : std::uint8_t {
  top = 1,
  leading = 2,
  bottom = 4,
  trailing = 8,
  horizontal = leading | trailing,
  vertical = top | bottom,
  all = top | leading | bottom | trailing,
};

constexpr Edge operator|(Edge lhs, Edge rhs) {
  return static_cast<Edge>(static_cast<std::uint8_t>(lhs) | static_cast<std::uint8_t>(rhs));
}
constexpr bool contains(Edge set, Edge edge) {
  return (static_cast<std::uint8_t>(set) & static_cast<std::uint8_t>(edge)) == static_cast<std::uint8_t>(edge);
}

enum class Axis { horizontal, vertical };

struct ProposedSize {
  std::optional<double> width;
  std::optional<double> height;

  static constexpr ProposedSize unspecified() { return {}; }
  static constexpr ProposedSize infinity() { return {kInfinity, kInfinity}; }
  static constexpr ProposedSize zero() { return {0.0, 0.0}; }
  static constexpr ProposedSize from(Size size) { return {size.width, size.height}; }

  std::optional<double> along(Axis axis) const { return axis == Axis::horizontal ? width : height; }

  friend bool operator==(const ProposedSize&, const ProposedSize&) = default;
};

inline double along(Size size, Axis axis) { return axis == Axis::horizontal ? size.width : size.height; }
inline Axis crossAxis(Axis axis) { return axis == Axis::horizontal ? Axis::vertical : Axis::horizontal; }
inline Size sizeAlong(Axis axis, double main, double cross) {
  return axis == Axis::horizontal ? Size{main, cross} : Size{cross, main};
}

}  // namespace kestrona
