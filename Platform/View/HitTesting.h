// What a press at a point of a laid-out tree does.
//
// A press runs the intent of the press target under the point, or follows
// the region link under it; where both are nested, the innermost wins, and
// where views overlap, the one drawn last (on top) wins. A press that no
// target or region link takes follows the widget's link (widgetURL), when
// the tree has one; otherwise it does nothing. A target takes a press that
// lands on its content: inside the frame of a view without children (a
// text, a fill, an image, a spacer) below it, and not outside any clip shape
// on the way; so a round button takes no press in its corners, and the
// gaps between a stack's children take none. Views scaled by a scale effect
// are pressed at their laid-out frame.
//
// The widget's link of a tree is the first widgetURL met from the root
// down, parents before children.
//
// Threading: reads the tree only; any thread. The intent pointers live as
// long as the tree's views.
#pragma once

#include <optional>
#include <variant>

#include "Platform/URL/URL.h"
#include "Platform/View/Geometry.h"
#include "Platform/View/Layout.h"

namespace kestrona {

struct PressIntent {
  // Never null.
  const AnyAppIntent* intent = nullptr;
  // The press target's node.
  const LaidOutNode* target = nullptr;
};

struct PressLink {
  URL url;
  // Whether the link is the widget's own rather than a region's.
  bool isWidgetURL = false;
};

using PressAction = std::variant<PressIntent, PressLink>;

// What a press at point does; none when nothing takes it.
std::optional<PressAction> hitTest(const LayoutTree& tree, Point point);

// The widget's link of tree, if any.
std::optional<URL> widgetURL(const LayoutTree& tree);

}  // namespace kestrona
