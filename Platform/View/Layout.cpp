#include "Platform/View/Layout.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <deque>
#include <map>
#include <numeric>
#include <tuple>

#include "Platform/View/PangoTextMeasurer.h"

namespace kestrona {
namespace {

template <typename... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};

std::optional<double> shrunk(std::optional<double> length, double by) {
  if (!length) return std::nullopt;
  return std::max(0.0, *length - by);
}

RGBAComponents deviceComponents(const Color& color, Appearance appearance) {
  std::optional<Color> device = color.resolved(appearance).usingColorSpace(ColorSpace::deviceRGB);
  if (!device) return RGBAComponents{0, 0, 0, 0};
  return device->components();
}

// text with every line break and tab as one space: a one-line text shows
// all of itself, spaced as a reader expects, rather than its first line
// or a gap to the next tab stop.
std::string onOneLine(std::string text) {
  static constexpr std::string_view kBreaks[] = {"\r\n", "\n", "\r", "\t", "\v", "\f", "\u0085", "\u2028", "\u2029"};
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    std::size_t matched = 0;
    for (std::string_view separator : kBreaks) {
      if (std::string_view(text).substr(at, separator.size()) == separator) {
        matched = separator.size();
        break;
      }
    }
    if (matched > 0) {
      result += ' ';
      at += matched;
    } else {
      result += text[at++];
    }
  }
  return result;
}

struct StackChild {
  ProposedSize proposal;
  Size size;
};

// One layout of one tree. Sizes are memoised by node and proposal: stacks
// ask each child for its size at several proposals, and nested stacks
// would otherwise repeat that work at every level.
class LayoutPass {
 public:
  LayoutPass(const TextMeasurer& measurer, const FontCatalog& fonts, const LayoutEnvironment& environment)
      : measurer_(measurer), fonts_(fonts), environment_(environment) {}

  Size sizeThatFits(const ViewNode& node, ProposedSize proposal) {
    const Key key{&node, proposal.width, proposal.height};
    if (auto found = sizes_.find(key); found != sizes_.end()) return found->second;
    const Size size = computeSize(node, proposal);
    sizes_.emplace(key, size);
    return size;
  }

  // Lays node out in a frame of size at origin, as proposed proposal.
  LaidOutNode place(const std::shared_ptr<const ViewNode>& pointer, ProposedSize proposal, Rect frame) {
    const ViewNode& node = *pointer;
    LaidOutNode out;
    out.node = pointer;
    out.kind = kindOf(node);
    out.frame = frame;
    std::visit(
        Overloaded{
            [&](const EmptyNode&) {},
            [&](const SpacerNode&) {},
            [&](const StackNode& stack) { placeStack(stack, proposal, frame, out); },
            [&](const TextNode& text) { out.text = layoutText(text, proposal).text; },
            [&](const ShapeNode& shape) { out.color = deviceComponents(shape.color, environment_.appearance); },
            [&](const ImageNode& image) { out.color = deviceComponents(image.tint, environment_.appearance); },
            [&](const PaddingNode& padding) {
              const EdgeInsets& insets = padding.insets;
              const ProposedSize inner{shrunk(proposal.width, insets.horizontal()),
                                       shrunk(proposal.height, insets.vertical())};
              const Size size = sizeThatFits(padding.child.node(), inner);
              out.children.push_back(place(padding.child.nodePointer(), inner,
                                           Rect{{frame.minX() + insets.leading, frame.minY() + insets.top}, size}));
            },
            [&](const FixedFrameNode& fixed) {
              const ProposedSize inner{fixed.width ? fixed.width : proposal.width,
                                       fixed.height ? fixed.height : proposal.height};
              placeAligned(fixed.child, inner, frame, fixed.alignment, out);
            },
            [&](const FlexibleFrameNode& flexible) {
              placeAligned(flexible.child, flexibleChildProposal(flexible.bounds, proposal), frame,
                           flexible.bounds.alignment, out);
            },
            [&](const BackgroundNode& background) {
              const Size size = sizeThatFits(background.child.node(), proposal);
              LaidOutNode child = place(background.child.nodePointer(), proposal, Rect{frame.origin, size});
              LaidOutNode decoration;
              {
                const ProposedSize offered = ProposedSize::from(size);
                const Size decorationSize = sizeThatFits(background.decoration.node(), offered);
                decoration = place(background.decoration.nodePointer(), offered,
                                   aligned(Rect{frame.origin, size}, decorationSize, background.alignment));
              }
              if (background.isOverlay) {
                out.children.push_back(std::move(child));
                out.children.push_back(std::move(decoration));
              } else {
                out.children.push_back(std::move(decoration));
                out.children.push_back(std::move(child));
              }
            },
            [&](const OpacityNode& wrapper) { out.children.push_back(placeWrapped(wrapper.child, proposal, frame)); },
            [&](const ClipNode& wrapper) { out.children.push_back(placeWrapped(wrapper.child, proposal, frame)); },
            [&](const ScaleNode& wrapper) { out.children.push_back(placeWrapped(wrapper.child, proposal, frame)); },
            [&](const OffsetNode& offset) {
              const Rect moved{{frame.minX() + offset.x, frame.minY() + offset.y}, frame.size};
              out.children.push_back(placeWrapped(offset.child, proposal, moved));
            },
            [&](const SizeReaderNode& reader) {
              const View& content = builtContent(reader, frame.size);
              placeAligned(content, ProposedSize::from(frame.size), frame, Alignment::topLeading(), out);
            },
            [&](const LinkNode& wrapper) { out.children.push_back(placeWrapped(wrapper.child, proposal, frame)); },
            [&](const PressTargetNode& wrapper) {
              out.children.push_back(placeWrapped(wrapper.child, proposal, frame));
            },
        },
        node.content);
    return out;
  }

 private:
  using Key = std::tuple<const ViewNode*, std::optional<double>, std::optional<double>>;
  using TextKey = std::pair<const TextNode*, std::optional<double>>;

  Size computeSize(const ViewNode& node, ProposedSize proposal) {
    return std::visit(
        Overloaded{
            [&](const EmptyNode&) { return Size{}; },
            [&](const SpacerNode&) {
              return Size{proposal.width.value_or(0), proposal.height.value_or(0)};
            },
            [&](const StackNode& stack) { return stackSize(stack, proposal); },
            [&](const TextNode& text) { return layoutText(text, proposal).size; },
            [&](const ShapeNode&) {
              return Size{proposal.width.value_or(10), proposal.height.value_or(10)};
            },
            [&](const ImageNode& image) {
              return Size{image.edge, image.edge};
            },
            [&](const PaddingNode& padding) {
              const EdgeInsets& insets = padding.insets;
              const Size child = sizeThatFits(padding.child.node(), {shrunk(proposal.width, insets.horizontal()),
                                                                     shrunk(proposal.height, insets.vertical())});
              return Size{child.width + insets.horizontal(), child.height + insets.vertical()};
            },
            [&](const FixedFrameNode& fixed) {
              if (fixed.width && fixed.height) return Size{*fixed.width, *fixed.height};
              const Size child = sizeThatFits(fixed.child.node(), {fixed.width ? fixed.width : proposal.width,
                                                                   fixed.height ? fixed.height : proposal.height});
              return Size{fixed.width.value_or(child.width), fixed.height.value_or(child.height)};
            },
            [&](const FlexibleFrameNode& flexible) { return flexibleSize(flexible, proposal); },
            [&](const BackgroundNode& background) { return sizeThatFits(background.child.node(), proposal); },
            [&](const OpacityNode& wrapper) { return sizeThatFits(wrapper.child.node(), proposal); },
            [&](const ClipNode& wrapper) { return sizeThatFits(wrapper.child.node(), proposal); },
            [&](const ScaleNode& wrapper) { return sizeThatFits(wrapper.child.node(), proposal); },
            [&](const OffsetNode& wrapper) { return sizeThatFits(wrapper.child.node(), proposal); },
            [&](const SizeReaderNode&) {
              return Size{proposal.width.value_or(10), proposal.height.value_or(10)};
            },
            [&](const LinkNode& wrapper) { return sizeThatFits(wrapper.child.node(), proposal); },
            [&](const PressTargetNode& wrapper) { return sizeThatFits(wrapper.child.node(), proposal); },
        },
        node.content);
  }

  // The content a size reader builds for size. Built views are kept for the
  // whole pass, as the size cache knows nodes by their address.
  const View& builtContent(const SizeReaderNode& reader, Size size) {
    return built_.emplace_back(reader.content(size));
  }

  LaidOutNode placeWrapped(const View& child, ProposedSize proposal, Rect frame) {
    return place(child.nodePointer(), proposal, frame);
  }

  static Rect aligned(Rect container, Size size, Alignment alignment) {
    return Rect{{container.minX() + alignedOffset(alignment.horizontal, container.width(), size.width),
                 container.minY() + alignedOffset(alignment.vertical, container.height(), size.height)},
                size};
  }

  void placeAligned(const View& child, ProposedSize childProposal, Rect frame, Alignment alignment, LaidOutNode& out) {
    const Size size = sizeThatFits(child.node(), childProposal);
    out.children.push_back(place(child.nodePointer(), childProposal, aligned(frame, size, alignment)));
  }

  // Frames.

  static std::optional<double> clampedProposal(std::optional<double> proposed, std::optional<double> minimum,
                                               std::optional<double> ideal, std::optional<double> maximum) {
    if (!minimum && !maximum) return proposed ? proposed : ideal;
    if (!proposed) return ideal;
    double length = *proposed;
    if (minimum) length = std::max(length, *minimum);
    if (maximum) length = std::min(length, *maximum);
    return length;
  }

  static ProposedSize flexibleChildProposal(const FlexibleFrame& bounds, ProposedSize proposal) {
    return {clampedProposal(proposal.width, bounds.minWidth, bounds.idealWidth, bounds.maxWidth),
            clampedProposal(proposal.height, bounds.minHeight, bounds.idealHeight, bounds.maxHeight)};
  }

  static double clampedLength(double child, std::optional<double> proposed, std::optional<double> minimum,
                              std::optional<double> ideal, std::optional<double> maximum) {
    const double offered = proposed ? *proposed : ideal.value_or(child);
    double length = child;
    if (minimum) length = std::max(*minimum, std::min(length, offered));
    if (maximum) length = std::min(*maximum, std::max(length, offered));
    return length;
  }

  Size flexibleSize(const FlexibleFrameNode& flexible, ProposedSize proposal) {
    const FlexibleFrame& bounds = flexible.bounds;
    const Size child = sizeThatFits(flexible.child.node(), flexibleChildProposal(bounds, proposal));
    return Size{clampedLength(child.width, proposal.width, bounds.minWidth, bounds.idealWidth, bounds.maxWidth),
                clampedLength(child.height, proposal.height, bounds.minHeight, bounds.idealHeight, bounds.maxHeight)};
  }

  // Stacks.

  Size childSizeInStack(Axis axis, const View& child, ProposedSize proposal) {
    if (const auto* spacer = std::get_if<SpacerNode>(&child.node().content)) {
      const double minimum = spacer->minLength.value_or(kDefaultSpacing);
      const double length = std::max(minimum, proposal.along(axis).value_or(minimum));
      return sizeAlong(axis, length, 0);
    }
    return sizeThatFits(child.node(), proposal);
  }

  static ProposedSize proposalAlong(Axis axis, std::optional<double> main, std::optional<double> cross) {
    return axis == Axis::horizontal ? ProposedSize{main, cross} : ProposedSize{cross, main};
  }

  std::vector<StackChild> stackChildren(const StackNode& stack, ProposedSize proposal) {
    std::vector<StackChild> children(stack.children.size());
    if (stack.axis == StackAxis::layered) {
      for (std::size_t index = 0; index < children.size(); ++index) {
        children[index] = {proposal, sizeThatFits(stack.children[index].node(), proposal)};
      }
      return children;
    }
    const Axis axis = stack.axis == StackAxis::horizontal ? Axis::horizontal : Axis::vertical;
    const std::optional<double> cross = proposal.along(crossAxis(axis));
    const std::optional<double> main = proposal.along(axis);
    if (!main) {
      for (std::size_t index = 0; index < children.size(); ++index) {
        const ProposedSize ideal = proposalAlong(axis, std::nullopt, cross);
        children[index] = {ideal, childSizeInStack(axis, stack.children[index], ideal)};
      }
      return children;
    }

    // Least flexible first: each child's range between its smallest and its
    // largest length along the axis.
    std::vector<double> flexibility(children.size());
    for (std::size_t index = 0; index < children.size(); ++index) {
      const View& child = stack.children[index];
      const double least = along(childSizeInStack(axis, child, proposalAlong(axis, 0.0, cross)), axis);
      const double most = along(childSizeInStack(axis, child, proposalAlong(axis, kInfinity, cross)), axis);
      const double range = most - least;
      flexibility[index] = std::isnan(range) ? kInfinity : range;
    }
    std::vector<std::size_t> order(children.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t lhs, std::size_t rhs) { return flexibility[lhs] < flexibility[rhs]; });

    double remaining = *main - spacingTotal(stack);
    std::size_t left = children.size();
    for (std::size_t index : order) {
      const double share = std::max(0.0, remaining / static_cast<double>(left));
      const ProposedSize offered = proposalAlong(axis, share, cross);
      const Size size = childSizeInStack(axis, stack.children[index], offered);
      children[index] = {offered, size};
      remaining -= along(size, axis);
      --left;
    }
    return children;
  }

  static double spacingTotal(const StackNode& stack) {
    if (stack.children.size() < 2) return 0;
    return stack.spacing.value_or(kDefaultSpacing) * static_cast<double>(stack.children.size() - 1);
  }

  Size stackSize(const StackNode& stack, ProposedSize proposal) {
    const std::vector<StackChild> children = stackChildren(stack, proposal);
    if (stack.axis == StackAxis::layered) {
      Size size;
      for (const StackChild& child : children) {
        size.width = std::max(size.width, child.size.width);
        size.height = std::max(size.height, child.size.height);
      }
      return size;
    }
    const Axis axis = stack.axis == StackAxis::horizontal ? Axis::horizontal : Axis::vertical;
    double main = spacingTotal(stack);
    double cross = 0;
    for (const StackChild& child : children) {
      main += along(child.size, axis);
      cross = std::max(cross, along(child.size, crossAxis(axis)));
    }
    return sizeAlong(axis, main, cross);
  }

  void placeStack(const StackNode& stack, ProposedSize proposal, Rect frame, LaidOutNode& out) {
    const std::vector<StackChild> children = stackChildren(stack, proposal);
    if (stack.axis == StackAxis::layered) {
      for (std::size_t index = 0; index < children.size(); ++index) {
        out.children.push_back(place(stack.children[index].nodePointer(), children[index].proposal,
                                     aligned(frame, children[index].size, stack.alignment)));
      }
      return;
    }
    const Axis axis = stack.axis == StackAxis::horizontal ? Axis::horizontal : Axis::vertical;
    const double spacing = stack.spacing.value_or(kDefaultSpacing);
    double offset = 0;
    for (std::size_t index = 0; index < children.size(); ++index) {
      const Size size = children[index].size;
      Point origin;
      if (axis == Axis::horizontal) {
        origin = {frame.minX() + offset,
                  frame.minY() + alignedOffset(stack.alignment.vertical, frame.height(), size.height)};
        offset += size.width + spacing;
      } else {
        origin = {frame.minX() + alignedOffset(stack.alignment.horizontal, frame.width(), size.width),
                  frame.minY() + offset};
        offset += size.height + spacing;
      }
      out.children.push_back(place(stack.children[index].nodePointer(), children[index].proposal, Rect{origin, size}));
    }
  }

  // Text.

  // A text and the size of its frame: its lines, no wider than its width
  // limit.
  struct TextLayout {
    LaidOutText text;
    Size size;
  };

  const TextLayout& layoutText(const TextNode& node, ProposedSize proposal) {
    const TextKey key{&node, proposal.width};
    if (auto found = texts_.find(key); found != texts_.end()) return found->second;
    LaidOutText text;
    const TextStyle& style = node.style;
    text.string = std::visit(Overloaded{
                                 [](const std::string& string) { return string; },
                                 [&](const LiveTimer& timer) { return liveTimerText(timer, environment_.now); },
                             },
                             node.content);
    if (style.lineLimit == 1) text.string = onOneLine(std::move(text.string));
    text.lineLimit = style.lineLimit;
    text.truncationMode = style.truncationMode;
    text.color = deviceComponents(style.foregroundColor, environment_.appearance);
    if (proposal.width && std::isfinite(*proposal.width)) text.widthLimit = *proposal.width;

    auto measureAt = [&](double scale) {
      const ResolvedFont font = fonts_.resolve(style.font, scale);
      return std::make_pair(font, measurer_.measure(TextMeasureRequest{text.string, font, text.widthLimit,
                                                                       style.lineLimit, style.truncationMode}));
    };
    auto [font, metrics] = measureAt(1.0);
    double scale = 1.0;
    if (metrics.isTruncated && style.minimumScaleFactor < 1.0) {
      auto smallest = measureAt(style.minimumScaleFactor);
      if (smallest.second.isTruncated) {
        scale = style.minimumScaleFactor;
        font = smallest.first;
        metrics = smallest.second;
      } else {
        // The largest scale that fits, to a hundredth of the font size.
        double fits = style.minimumScaleFactor;
        double doesNotFit = 1.0;
        auto best = smallest;
        while (doesNotFit - fits > 0.01) {
          const double middle = (fits + doesNotFit) / 2;
          auto attempt = measureAt(middle);
          if (attempt.second.isTruncated) {
            doesNotFit = middle;
          } else {
            fits = middle;
            best = attempt;
          }
        }
        scale = fits;
        font = best.first;
        metrics = best.second;
      }
    }
    text.font = font;
    text.scale = scale;
    text.lineCount = metrics.lineCount;
    text.isTruncated = metrics.isTruncated;
    Size size = metrics.size;
    if (text.widthLimit) size.width = std::min(size.width, *text.widthLimit);
    return texts_.emplace(key, TextLayout{std::move(text), size}).first->second;
  }

  const TextMeasurer& measurer_;
  const FontCatalog& fonts_;
  const LayoutEnvironment& environment_;
  std::map<Key, Size> sizes_;
  std::map<TextKey, TextLayout> texts_;
  std::deque<View> built_;
};

void collect(const LaidOutNode& node, std::vector<const LaidOutNode*>& into) {
  into.push_back(&node);
  for (const LaidOutNode& child : node.children) collect(child, into);
}

bool findPath(const LaidOutNode& node, const LaidOutNode& target, std::vector<const LaidOutNode*>& path) {
  path.push_back(&node);
  if (&node == &target) return true;
  for (const LaidOutNode& child : node.children) {
    if (findPath(child, target, path)) return true;
  }
  path.pop_back();
  return false;
}

}  // namespace

ViewKind kindOf(const ViewNode& node) {
  return std::visit(Overloaded{
                        [](const EmptyNode&) { return ViewKind::empty; },
                        [](const StackNode&) { return ViewKind::stack; },
                        [](const TextNode&) { return ViewKind::text; },
                        [](const SpacerNode&) { return ViewKind::spacer; },
                        [](const ShapeNode&) { return ViewKind::shape; },
                        [](const ImageNode&) { return ViewKind::image; },
                        [](const PaddingNode&) { return ViewKind::padding; },
                        [](const FixedFrameNode&) { return ViewKind::fixedFrame; },
                        [](const FlexibleFrameNode&) { return ViewKind::flexibleFrame; },
                        [](const BackgroundNode&) { return ViewKind::background; },
                        [](const OpacityNode&) { return ViewKind::opacity; },
                        [](const ClipNode&) { return ViewKind::clip; },
                        [](const ScaleNode&) { return ViewKind::scale; },
                        [](const OffsetNode&) { return ViewKind::offset; },
                        [](const SizeReaderNode&) { return ViewKind::sizeReader; },
                        [](const LinkNode&) { return ViewKind::link; },
                        [](const PressTargetNode&) { return ViewKind::pressTarget; },
                    },
                    node.content);
}

std::vector<const LaidOutNode*> LayoutTree::nodes() const {
  std::vector<const LaidOutNode*> all;
  collect(root_, all);
  return all;
}

std::vector<const LaidOutNode*> LayoutTree::nodesOfKind(ViewKind kind) const {
  std::vector<const LaidOutNode*> matching;
  for (const LaidOutNode* node : nodes()) {
    if (node->kind == kind) matching.push_back(node);
  }
  return matching;
}

const LaidOutNode* LayoutTree::findText(std::string_view string) const {
  for (const LaidOutNode* node : nodes()) {
    if (node->text && node->text->string == string) return node;
  }
  return nullptr;
}

std::vector<const LaidOutNode*> LayoutTree::ancestry(const LaidOutNode& target) const {
  std::vector<const LaidOutNode*> path;
  findPath(root_, target, path);
  return path;
}

double LayoutTree::effectiveOpacity(const LaidOutNode& target) const {
  double opacity = 1;
  for (const LaidOutNode* node : ancestry(target)) {
    if (const OpacityNode* layer = node->as<OpacityNode>()) opacity *= layer->opacity;
  }
  return opacity;
}

LayoutTree layout(const View& root, Size canvasSize, const TextMeasurer& measurer, const FontCatalog& fonts,
                  const LayoutEnvironment& environment) {
  LayoutPass pass(measurer, fonts, environment);
  const ProposedSize proposal = ProposedSize::from(canvasSize);
  const Size size = pass.sizeThatFits(root.node(), proposal);
  const Rect frame{{(canvasSize.width - size.width) / 2, (canvasSize.height - size.height) / 2}, size};
  return LayoutTree(canvasSize, pass.place(root.nodePointer(), proposal, frame));
}

LayoutTree layout(const View& root, Size canvasSize) {
  const PangoTextMeasurer measurer;
  return layout(root, canvasSize, measurer, FontCatalog::system(), LayoutEnvironment{Appearance::dark(), Date::now()});
}

std::string liveTimerText(const LiveTimer& timer, Date now) {
  const double elapsed = std::floor(now.timeIntervalSince1970()) - std::floor(timer.begin.timeIntervalSince1970());
  const long long seconds = std::isfinite(elapsed) && elapsed > 0 ? static_cast<long long>(elapsed) : 0;
  char buffer[32];
  if (seconds >= 3600) {
    std::snprintf(buffer, sizeof buffer, "%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
  } else {
    std::snprintf(buffer, sizeof buffer, "%lld:%02lld", seconds / 60, seconds % 60);
  }
  return buffer;
}

}  // namespace kestrona
