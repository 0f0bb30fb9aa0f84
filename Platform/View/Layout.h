// The layout pass: gives every node of a view tree its frame.
//
// Layout works as a person who knows declarative layout expects. A parent
// proposes a size to each child (a length, infinity, or none for "your ideal
// size"); the child chooses its own size; the parent places it.
//   - The root is proposed the canvas size and centred on the canvas.
//   - A vertical or horizontal stack takes its spacing (8 when it states
//     none) from the length proposed along its axis and shares the rest
//     among its children, least flexible first, each getting an equal part
//     of what is left; so flexible children share the remaining space and a
//     spacer takes what the others leave. Children are placed one after the
//     other and aligned across the axis by the stack's alignment. The stack
//     is as long as its children and spacing, and as wide as its widest
//     child.
//   - A layered stack proposes its whole proposal to each child, is as
//     large as the largest, and aligns each child by its alignment.
//   - A spacer is as long as proposed along its stack's axis (at least its
//     minimum length, 8 unless stated) and has no thickness across it.
//   - Padding proposes the proposal less its insets and adds them back.
//   - A fixed frame proposes its lengths and takes them; a flexible frame
//     clamps the proposal into its bounds for its child, then clamps the
//     child's size towards the proposal within its bounds (so a maximum of
//     infinity takes all the space offered). Both align the child inside.
//   - Colour fills and shapes take all the space offered; template images
//     their edge length; text the size of its lines within the proposed
//     width (below).
//   - Background and overlay take the child's size and offer it to their
//     decoration; opacity, clipping, scaling, links and press targets take
//     their child's size. An offset takes its child's size and frame, and
//     moves the child's frame (and all below it) by its distances.
//   - A size reader takes all the space offered (10 points along an axis
//     with no proposal), builds its content for that size and lays it out
//     in it, at the top-leading corner; the content is its one child.
// Text: the text is measured within the proposed width (unbounded when none
// is proposed) and its line limit. When it does not fit and its minimum
// scale factor is below 1, the largest font scale (down to that factor) at
// which it fits is used; when even that factor does not fit, the text is
// truncated at it. A live timer is laid out as its value at the layout's
// moment. A text limited to one line shows each line break and tab in it
// as a space. Text in either direction is measured and drawn whole within
// its frame; truncation cuts the end of the text's own direction (the left
// of a right-to-left name).
//
// Colours are resolved against the layout's appearance (dark, as widgets
// are drawn) and converted to device RGB, as the renderer draws them; a
// colour with no conversion (components that are not numbers) becomes
// transparent.
//
// Frames are absolute: points from the canvas's top-left corner. Children of
// a background node are its decoration then its child; of an overlay node,
// its child then its decoration: always in drawing order.
//
// Threading: layout() uses only its arguments; it may run on any thread,
// with a measurer that thread may use. A LayoutTree is an immutable value.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Color/Appearance.h"
#include "Platform/Color/Color.h"
#include "Platform/Time/Date.h"
#include "Platform/View/FontCatalog.h"
#include "Platform/View/Geometry.h"
#include "Platform/View/TextMeasurer.h"
#include "Platform/View/View.h"

namespace kestrona {

enum class ViewKind {
  empty,
  stack,
  text,
  spacer,
  shape,
  image,
  padding,
  fixedFrame,
  flexibleFrame,
  background,
  opacity,
  clip,
  scale,
  offset,
  sizeReader,
  link,
  pressTarget,
};

ViewKind kindOf(const ViewNode& node);

// A text as laid out: what the renderer draws, and what tests check.
struct LaidOutText {
  std::string string;
  // The font as drawn: the family chosen, at the size after scaling.
  ResolvedFont font;
  // The factor the font was shrunk by to fit (1 when it was not).
  double scale = 1;
  // The width the text was laid out in; none when unbounded.
  std::optional<double> widthLimit;
  std::optional<int> lineLimit;
  TruncationMode truncationMode = TruncationMode::tail;
  RGBAComponents color;
  int lineCount = 0;
  bool isTruncated = false;
};

struct LaidOutNode {
  std::shared_ptr<const ViewNode> node;
  ViewKind kind = ViewKind::empty;
  Rect frame;
  std::vector<LaidOutNode> children;
  // For text nodes.
  std::optional<LaidOutText> text;
  // The fill of a shape or colour fill, the tint of a template image.
  std::optional<RGBAComponents> color;

  // The node's own content when it is of kind T (a TextNode, ClipNode, ...).
  template <typename T>
  const T* as() const noexcept {
    return std::get_if<T>(&node->content);
  }
};

struct LayoutEnvironment {
  Appearance appearance = Appearance::dark();
  // The moment live timers show.
  Date now;
};

class LayoutTree {
 public:
  LayoutTree(Size canvasSize, LaidOutNode root) : canvasSize_(canvasSize), root_(std::move(root)) {}

  Size canvasSize() const noexcept { return canvasSize_; }
  const LaidOutNode& root() const noexcept { return root_; }

  // Every node, parents before children, in drawing order.
  std::vector<const LaidOutNode*> nodes() const;
  // The nodes of kind, in the same order.
  std::vector<const LaidOutNode*> nodesOfKind(ViewKind kind) const;
  // The first text node showing string, or null.
  const LaidOutNode* findText(std::string_view string) const;
  // The chain of nodes from the root down to target (both included); empty
  // when target is not in this tree.
  std::vector<const LaidOutNode*> ancestry(const LaidOutNode& target) const;
  // The opacity target is drawn at: the product of the opacities of the
  // opacity nodes from the root down to it, itself included; 1 when there
  // are none. (Colour alpha comes on top of it.)
  double effectiveOpacity(const LaidOutNode& target) const;

 private:
  Size canvasSize_;
  LaidOutNode root_;
};

// Lays out root on a canvas of canvasSize points.
LayoutTree layout(const View& root, Size canvasSize, const TextMeasurer& measurer, const FontCatalog& fonts,
                  const LayoutEnvironment& environment);

// Lays out root with Pango measurement, this machine's fonts, the dark
// appearance and the present moment (Date::now()).
LayoutTree layout(const View& root, Size canvasSize);

// The text a live timer shows at now.
std::string liveTimerText(const LiveTimer& timer, Date now);

}  // namespace kestrona
