// The declarative view tree of the widgets.
//
// A View is an immutable node: what to show, never where. Views are built
// from the kinds below and wrapped by modifiers, each of which returns a new
// view and leaves its receiver as it was:
//
//   VStack(HorizontalAlignment::leading, 2, {
//       Text("Design").font(Font::system(10, Font::Weight::bold)).lineLimit(1),
//       Text("Concept").font(Font::system(17, Font::Weight::bold)),
//   }).padding(13).background(ColorFill(Color::black()))
//
// Kinds: vertical, horizontal and layered stacks (VStack, HStack, ZStack)
// with alignment and spacing; Spacer; Text (a fixed string, or a live timer
// counting up from a date); ColorFill (a colour that fills its space);
// ShapeView (a shape filled with a colour); TemplateImage (a vector icon in a
// tint); SizeReader (content built from the size it is given); EmptyView.
// Modifiers: padding, fixed and flexible frames,
// background and overlay, opacity, clipping to a shape, a scale effect that
// leaves layout alone, an offset, the widget's link (widgetURL), a link on a region
// (link), and a press target that carries an intent (pressTarget).
//
// Layout.h gives every node its frame; Renderer.h draws the laid-out tree;
// HitTesting.h finds what a press at a point runs. Sharing: copying a view
// copies a pointer; subtrees are shared between trees freely.
//
// Threading: views are immutable values; build, copy and read them on any
// thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Platform/Color/Color.h"
#include "Platform/Time/Date.h"
#include "Platform/URL/URL.h"
#include "Platform/View/Alignment.h"
#include "Platform/View/Font.h"
#include "Platform/View/Geometry.h"
#include "Platform/View/Shape.h"
#include "Platform/View/TemplateImage.h"

namespace kestrona {

class AnyAppIntent;
struct ViewNode;

// Spacing of a stack that states none, and the least length of a spacer
// that states none.
inline constexpr double kDefaultSpacing = 8;

// Bounds of a flexible frame; absent bounds leave that side to the child.
struct FlexibleFrame {
  std::optional<double> minWidth = std::nullopt;
  std::optional<double> idealWidth = std::nullopt;
  std::optional<double> maxWidth = std::nullopt;
  std::optional<double> minHeight = std::nullopt;
  std::optional<double> idealHeight = std::nullopt;
  std::optional<double> maxHeight = std::nullopt;
  Alignment alignment = Alignment::center();

  friend bool operator==(const FlexibleFrame&, const FlexibleFrame&) = default;
};

class View {
 public:
  // An empty view: no size, nothing drawn.
  View();

  View padding(double length) const { return padding(EdgeInsets::all(length)); }
  View padding(Edge edges, double length) const;
  View padding(EdgeInsets insets) const;

  // A frame of fixed width and/or height; an absent length is the child's.
  View frame(std::optional<double> width, std::optional<double> height,
             Alignment alignment = Alignment::center()) const;
  View frame(const FlexibleFrame& bounds) const;

  // view drawn behind (background) or in front of (overlay) this one, offered
  // this view's size and placed by alignment. The pair has this view's size.
  View background(const View& view, Alignment alignment = Alignment::center()) const;
  View overlay(const View& view, Alignment alignment = Alignment::center()) const;

  // Draws this view, as one layer, at opacity (0 to 1).
  View opacity(double opacity) const;
  // Clips drawing (and presses) to shape laid into this view's frame.
  View clipShape(const Shape& shape) const;
  // Draws this view scaled by factor about its centre; layout is unchanged.
  View scaleEffect(double factor) const;
  // Draws (and presses) this view moved by x and y; layout is unchanged.
  View offset(double x, double y) const;

  // The link that a press anywhere on the widget follows, unless a press
  // target or region link takes the press first.
  View widgetURL(const URL& url) const;
  // A link that a press on this view follows.
  View link(const URL& url) const;
  // A press on this view runs intent.
  View pressTarget(const AnyAppIntent& intent) const;

  const ViewNode& node() const noexcept { return *node_; }
  const std::shared_ptr<const ViewNode>& nodePointer() const noexcept { return node_; }

 protected:
  explicit View(std::shared_ptr<const ViewNode> node) : node_(std::move(node)) {}

 private:
  std::shared_ptr<const ViewNode> node_;
};

enum class TruncationMode { tail, head, middle };

// A live timer: the time since begin, as "m:ss" below an hour and "h:mm:ss"
// from one hour on, read at the moment of layout; never negative.
struct LiveTimer {
  Date begin;
  friend bool operator==(const LiveTimer&, const LiveTimer&) = default;
};

struct TextStyle {
  Font font = Font::system(13);
  // Primary text of the dark scheme.
  Color foregroundColor = Color::white();
  // At most this many lines; none is as many as the text needs.
  std::optional<int> lineLimit;
  TruncationMode truncationMode = TruncationMode::tail;
  // The least factor (0 to 1) by which the font may shrink before the text
  // is truncated; 1 never shrinks.
  double minimumScaleFactor = 1;
};

class Text : public View {
 public:
  explicit Text(std::string string);
  // A live timer counting up from begin.
  static Text timer(Date begin);

  Text font(const Font& font) const;
  Text foregroundColor(const Color& color) const;
  Text lineLimit(std::optional<int> limit) const;
  Text truncationMode(TruncationMode mode) const;
  Text minimumScaleFactor(double factor) const;

 private:
  using View::View;
};

class VStack : public View {
 public:
  explicit VStack(std::vector<View> children)
      : VStack(HorizontalAlignment::center, std::nullopt, std::move(children)) {}
  VStack(HorizontalAlignment alignment, std::optional<double> spacing, std::vector<View> children);
};

class HStack : public View {
 public:
  explicit HStack(std::vector<View> children) : HStack(VerticalAlignment::center, std::nullopt, std::move(children)) {}
  HStack(VerticalAlignment alignment, std::optional<double> spacing, std::vector<View> children);
};

// Children laid over each other, the first at the back.
class ZStack : public View {
 public:
  explicit ZStack(std::vector<View> children) : ZStack(Alignment::center(), std::move(children)) {}
  ZStack(Alignment alignment, std::vector<View> children);
};

// Takes the space left along its stack's axis, at least minLength.
class Spacer : public View {
 public:
  explicit Spacer(std::optional<double> minLength = std::nullopt);
};

class EmptyView : public View {
 public:
  EmptyView() = default;
};

// A colour filling all the space offered.
class ColorFill : public View {
 public:
  explicit ColorFill(const Color& color);
};

// shape filled with color, taking all the space offered.
class ShapeView : public View {
 public:
  ShapeView(const Shape& shape, const Color& color);
};

// Takes all the space offered and fills it with the view that content
// builds for that size, placed at its top-leading corner: for views that
// divide their space by arithmetic (bars of a chart). content is called
// during layout, possibly more than once, and must not have side effects.
class SizeReader : public View {
 public:
  explicit SizeReader(std::function<View(Size)> content);
};

// A template image of edge points square, in tint (white unless given).
class TemplateImage : public View {
 public:
  explicit TemplateImage(TemplateSymbol symbol, std::optional<double> edge = std::nullopt);

  TemplateImage tint(const Color& color) const;

 private:
  using View::View;
};

// The nodes behind views, for layout, drawing and tests. A node is made only
// by the view types above.
enum class StackAxis { vertical, horizontal, layered };

struct StackNode {
  StackAxis axis = StackAxis::vertical;
  Alignment alignment;
  std::optional<double> spacing;
  std::vector<View> children;
};
struct TextNode {
  std::variant<std::string, LiveTimer> content;
  TextStyle style;
};
struct SpacerNode {
  std::optional<double> minLength;
};
struct EmptyNode {};
struct ShapeNode {
  Shape shape = Shape::rectangle();
  Color color = Color::black();
};
struct ImageNode {
  TemplateSymbol symbol = TemplateSymbol::play;
  double edge = 0;
  Color tint = Color::white();
};
struct PaddingNode {
  EdgeInsets insets;
  View child;
};
struct FixedFrameNode {
  std::optional<double> width;
  std::optional<double> height;
  Alignment alignment;
  View child;
};
struct FlexibleFrameNode {
  FlexibleFrame bounds;
  View child;
};
struct BackgroundNode {
  View child;
  View decoration;
  Alignment alignment;
  bool isOverlay = false;
};
struct OpacityNode {
  double opacity = 1;
  View child;
};
struct ClipNode {
  Shape shape = Shape::rectangle();
  View child;
};
struct ScaleNode {
  double factor = 1;
  View child;
};
struct OffsetNode {
  double x = 0;
  double y = 0;
  View child;
};
struct SizeReaderNode {
  std::function<View(Size)> content;
};
struct LinkNode {
  URL url;
  bool isWidgetURL = false;
  View child;
};
struct PressTargetNode {
  std::shared_ptr<const AnyAppIntent> intent;
  View child;
};

struct ViewNode {
  std::variant<EmptyNode, StackNode, TextNode, SpacerNode, ShapeNode, ImageNode, PaddingNode, FixedFrameNode,
               FlexibleFrameNode, BackgroundNode, OpacityNode, ClipNode, ScaleNode, OffsetNode, SizeReaderNode,
               LinkNode, PressTargetNode>
      content;
};

}  // namespace kestrona
