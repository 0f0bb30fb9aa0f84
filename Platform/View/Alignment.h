// Alignment guides: where a smaller child is placed inside a larger space.
//
// Stacks align their children across their axis (a vertical stack by a
// HorizontalAlignment, a horizontal stack by a VerticalAlignment); frames,
// layered stacks, backgrounds and overlays align in both directions by an
// Alignment. Layout is left to right only.
//
// Threading: plain values; any thread.
#pragma once

namespace kestrona {

enum class HorizontalAlignment { leading, center, trailing };
enum class VerticalAlignment { top, center, bottom };

struct Alignment {
  HorizontalAlignment horizontal = HorizontalAlignment::center;
  VerticalAlignment vertical = VerticalAlignment::center;

  static constexpr Alignment center() { return {}; }
  static constexpr Alignment leading() { return {HorizontalAlignment::leading, VerticalAlignment::center}; }
  static constexpr Alignment trailing() { return {HorizontalAlignment::trailing, VerticalAlignment::center}; }
  static constexpr Alignment top() { return {HorizontalAlignment::center, VerticalAlignment::top}; }
  static constexpr Alignment bottom() { return {HorizontalAlignment::center, VerticalAlignment::bottom}; }
  static constexpr Alignment topLeading() { return {HorizontalAlignment::leading, VerticalAlignment::top}; }
  static constexpr Alignment topTrailing() { return {HorizontalAlignment::trailing, VerticalAlignment::top}; }
  static constexpr Alignment bottomLeading() { return {HorizontalAlignment::leading, VerticalAlignment::bottom}; }
  static constexpr Alignment bottomTrailing() { return {HorizontalAlignment::trailing, VerticalAlignment::bottom}; }

  friend constexpr bool operator==(Alignment, Alignment) = default;
};

// The offset of a child of length inner placed in a space of length outer.
constexpr double alignedOffset(HorizontalAlignment alignment, double outer, double inner) {
  switch (alignment) {
    case HorizontalAlignment::leading: return 0;
    case HorizontalAlignment::center: return (outer - inner) / 2;
    case HorizontalAlignment::trailing: return outer - inner;
  }
  return 0;
}

constexpr double alignedOffset(VerticalAlignment alignment, double outer, double inner) {
  switch (alignment) {
    case VerticalAlignment::top: return 0;
    case VerticalAlignment::center: return (outer - inner) / 2;
    case VerticalAlignment::bottom: return outer - inner;
  }
  return 0;
}

}  // namespace kestrona
