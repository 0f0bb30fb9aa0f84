#include "Platform/View/HitTesting.h"

namespace kestrona {
namespace {

// Whether a press at a point lands on a subtree, and what it does there.
// A leaf is pressed inside its frame; a node with children where one of
// them is, so clipping inside a press target narrows what it takes.
struct Hit {
  bool isOnView = false;
  std::optional<PressAction> action;
};

// The innermost, topmost press target or region link under point within
// node, searching children from the last drawn to the first.
Hit hitWithin(const LaidOutNode& node, Point point) {
  if (const ClipNode* clip = node.as<ClipNode>()) {
    if (!clip->shape.contains(node.frame, point)) return {};
  }
  Hit hit;
  if (node.children.empty()) {
    hit.isOnView = node.frame.contains(point);
  }
  for (auto child = node.children.rbegin(); child != node.children.rend(); ++child) {
    Hit childHit = hitWithin(*child, point);
    if (childHit.action) return childHit;
    hit.isOnView = hit.isOnView || childHit.isOnView;
  }
  if (!hit.isOnView) return hit;
  if (const PressTargetNode* press = node.as<PressTargetNode>()) {
    hit.action = PressAction{PressIntent{press->intent.get(), &node}};
  } else if (const LinkNode* link = node.as<LinkNode>(); link && !link->isWidgetURL) {
    hit.action = PressAction{PressLink{link->url, false}};
  }
  return hit;
}

}  // namespace

std::optional<PressAction> hitTest(const LayoutTree& tree, Point point) {
  if (auto action = hitWithin(tree.root(), point).action) return action;
  if (auto url = widgetURL(tree)) return PressAction{PressLink{*url, true}};
  return std::nullopt;
}

std::optional<URL> widgetURL(const LayoutTree& tree) {
  for (const LaidOutNode* node : tree.nodes()) {
    if (const LinkNode* link = node->as<LinkNode>(); link && link->isWidgetURL) return link->url;
  }
  return std::nullopt;
}

}  // namespace kestrona
