#include "Platform/View/View.h"

#include <cmath>

#include "Platform/Foundation/FatalError.h"
#include "Platform/Intents/AppIntent.h"

namespace kestrona {
namespace {

std::shared_ptr<const ViewNode> makeNode(auto content) {
  return std::make_shared<const ViewNode>(ViewNode{std::move(content)});
}

void requireLength(std::optional<double> length, std::string_view what) {
  if (length) precondition(*length >= 0 && !std::isnan(*length), what);
}

}  // namespace

View::View() : node_(makeNode(EmptyNode{})) {}

View View::padding(Edge edges, double length) const {
  EdgeInsets insets;
  if (contains(edges, Edge::top)) insets.top = length;
  if (contains(edges, Edge::leading)) insets.leading = length;
  if (contains(edges, Edge::bottom)) insets.bottom = length;
  if (contains(edges, Edge::trailing)) insets.trailing = length;
  return padding(insets);
}

View View::padding(EdgeInsets insets) const {
  for (double inset : {insets.top, insets.leading, insets.bottom, insets.trailing}) {
    precondition(std::isfinite(inset), "Padding must be finite");
  }
  return View(makeNode(PaddingNode{insets, *this}));
}

View View::frame(std::optional<double> width, std::optional<double> height, Alignment alignment) const {
  requireLength(width, "A frame's width must not be negative");
  requireLength(height, "A frame's height must not be negative");
  return View(makeNode(FixedFrameNode{width, height, alignment, *this}));
}

View View::frame(const FlexibleFrame& bounds) const {
  for (auto length :
       {bounds.minWidth, bounds.idealWidth, bounds.maxWidth, bounds.minHeight, bounds.idealHeight, bounds.maxHeight}) {
    requireLength(length, "A frame's bounds must not be negative");
  }
  precondition(!(bounds.minWidth && bounds.maxWidth && *bounds.minWidth > *bounds.maxWidth),
               "A frame's minimum width must not exceed its maximum");
  precondition(!(bounds.minHeight && bounds.maxHeight && *bounds.minHeight > *bounds.maxHeight),
               "A frame's minimum height must not exceed its maximum");
  return View(makeNode(FlexibleFrameNode{bounds, *this}));
}

View View::background(const View& view, Alignment alignment) const {
  return View(makeNode(BackgroundNode{*this, view, alignment, false}));
}

View View::overlay(const View& view, Alignment alignment) const {
  return View(makeNode(BackgroundNode{*this, view, alignment, true}));
}

View View::opacity(double opacity) const {
  precondition(opacity >= 0 && opacity <= 1, "An opacity lies between 0 and 1");
  return View(makeNode(OpacityNode{opacity, *this}));
}

View View::clipShape(const Shape& shape) const { return View(makeNode(ClipNode{shape, *this})); }

View View::scaleEffect(double factor) const {
  precondition(std::isfinite(factor), "A scale factor must be finite");
  return View(makeNode(ScaleNode{factor, *this}));
}

View View::offset(double x, double y) const {
  precondition(std::isfinite(x) && std::isfinite(y), "An offset must be finite");
  return View(makeNode(OffsetNode{x, y, *this}));
}

View View::widgetURL(const URL& url) const { return View(makeNode(LinkNode{url, true, *this})); }

View View::link(const URL& url) const { return View(makeNode(LinkNode{url, false, *this})); }

View View::pressTarget(const AnyAppIntent& intent) const {
  return View(makeNode(PressTargetNode{std::make_shared<const AnyAppIntent>(intent), *this}));
}

Text::Text(std::string string) : View(makeNode(TextNode{std::move(string), TextStyle{}})) {}

Text Text::timer(Date begin) { return Text(makeNode(TextNode{LiveTimer{begin}, TextStyle{}})); }

namespace {

// A copy of text's node with its style changed by change.
std::shared_ptr<const ViewNode> restyled(const View& text, auto change) {
  TextNode node = std::get<TextNode>(text.node().content);
  change(node.style);
  return makeNode(std::move(node));
}

}  // namespace

Text Text::font(const Font& font) const {
  return Text(restyled(*this, [&](TextStyle& style) { style.font = font; }));
}

Text Text::foregroundColor(const Color& color) const {
  return Text(restyled(*this, [&](TextStyle& style) { style.foregroundColor = color; }));
}

Text Text::lineLimit(std::optional<int> limit) const {
  precondition(!limit || *limit > 0, "A line limit must be positive");
  return Text(restyled(*this, [&](TextStyle& style) { style.lineLimit = limit; }));
}

Text Text::truncationMode(TruncationMode mode) const {
  return Text(restyled(*this, [&](TextStyle& style) { style.truncationMode = mode; }));
}

Text Text::minimumScaleFactor(double factor) const {
  precondition(factor > 0 && factor <= 1, "A minimum scale factor lies in (0, 1]");
  return Text(restyled(*this, [&](TextStyle& style) { style.minimumScaleFactor = factor; }));
}

VStack::VStack(HorizontalAlignment alignment, std::optional<double> spacing, std::vector<View> children)
    : View(makeNode(StackNode{StackAxis::vertical, Alignment{alignment, VerticalAlignment::center}, spacing,
                              std::move(children)})) {
  requireLength(spacing, "A stack's spacing must not be negative");
}

HStack::HStack(VerticalAlignment alignment, std::optional<double> spacing, std::vector<View> children)
    : View(makeNode(StackNode{StackAxis::horizontal, Alignment{HorizontalAlignment::center, alignment}, spacing,
                              std::move(children)})) {
  requireLength(spacing, "A stack's spacing must not be negative");
}

ZStack::ZStack(Alignment alignment, std::vector<View> children)
    : View(makeNode(StackNode{StackAxis::layered, alignment, std::nullopt, std::move(children)})) {}

Spacer::Spacer(std::optional<double> minLength) : View(makeNode(SpacerNode{minLength})) {
  requireLength(minLength, "A spacer's minimum length must not be negative");
}

namespace {

std::function<View(Size)> requireContent(std::function<View(Size)> content) {
  precondition(static_cast<bool>(content), "A size reader needs content");
  return content;
}

}  // namespace

SizeReader::SizeReader(std::function<View(Size)> content)
    : View(makeNode(SizeReaderNode{requireContent(std::move(content))})) {}

ColorFill::ColorFill(const Color& color) : View(makeNode(ShapeNode{Shape::rectangle(), color})) {}

ShapeView::ShapeView(const Shape& shape, const Color& color) : View(makeNode(ShapeNode{shape, color})) {}

TemplateImage::TemplateImage(TemplateSymbol symbol, std::optional<double> edge)
    : View(makeNode(ImageNode{symbol, edge.value_or(naturalEdge(symbol)), Color::white()})) {
  requireLength(edge, "An image's edge must not be negative");
}

TemplateImage TemplateImage::tint(const Color& color) const {
  ImageNode node = std::get<ImageNode>(this->node().content);
  node.tint = color;
  return TemplateImage(makeNode(std::move(node)));
}

}  // namespace kestrona
