#include "Extension/WidgetWindow/WidgetBoard.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "Extension/WidgetProcess/WidgetViews.h"
#include "Platform/View/Shape.h"

namespace kestrona {
namespace {

// How long after a whole second a live timer is laid out again: enough that
// a timer firing a hair early still finds the new second.
constexpr double kLiveTimerSlack = 0.01;

// The chosen widgets of bundle, each offering only the families chosen for
// it, so that the host makes no instance nobody sees.
std::vector<WidgetConfiguration> chosenWidgets(const std::vector<WidgetConfiguration>& bundle,
                                               const std::vector<WidgetChoice>& choices) {
  std::vector<WidgetConfiguration> chosen;
  for (const WidgetConfiguration& widget : bundle) {
    std::vector<WidgetFamily> families;
    for (const WidgetChoice& choice : choices) {
      if (choice.kind == widget.kind() && std::find(families.begin(), families.end(), choice.family) == families.end()) {
        families.push_back(choice.family);
      }
    }
    if (!families.empty()) chosen.push_back(widget.withSupportedFamilies(std::move(families)));
  }
  return chosen;
}

bool showsLiveTimer(const LayoutTree& tree) {
  const std::vector<const LaidOutNode*> texts = tree.nodesOfKind(ViewKind::text);
  return std::any_of(texts.begin(), texts.end(), [](const LaidOutNode* node) {
    return std::holds_alternative<LiveTimer>(node->as<TextNode>()->content);
  });
}

Shape outlineOf(const LaidOutNode& node, const Rect& frame) {
  if (node.frame == frame) {
    if (const ClipNode* clip = node.as<ClipNode>()) return clip->shape;
    if (const ShapeNode* fill = node.as<ShapeNode>()) return fill->shape;
  }
  for (const LaidOutNode& child : node.children) {
    Shape shape = outlineOf(child, frame);
    if (shape.kind() != Shape::Kind::rectangle) return shape;
  }
  return Shape::rectangle();
}

}  // namespace

WidgetBoard::WidgetBoard(const std::vector<WidgetConfiguration>& bundle, std::vector<WidgetChoice> choices,
                         Clock& clock, std::shared_ptr<FileChangeMonitor> monitor,
                         const std::optional<std::filesystem::path>& widgetDirectory)
    : clock_(clock), host_(chosenWidgets(bundle, choices), clock, std::move(monitor)), changed_(choices.size()) {
  if (widgetDirectory) {
    for (const WidgetConfiguration& widget : host_.widgets()) {
      host_.watchDataFile(widget.kind(), *widgetDirectory / widget.kind());
    }
  }
  host_.setObserver([this, choices](const WidgetHostEvent& event) {
    for (std::size_t index = 0; index < choices.size(); ++index) {
      if (choices[index].kind == event.widgetKind && choices[index].family == event.family) changed_[index] = true;
    }
  });
  host_.start();
  placements_.reserve(choices.size());
  for (const WidgetChoice& choice : choices) placements_.push_back(laidOut(choice));
  std::fill(changed_.begin(), changed_.end(), false);
}

WidgetBoard::Placement WidgetBoard::laidOut(const WidgetChoice& choice) const {
  const AnyTimelineEntry& entry = *host_.currentEntry(choice.kind, choice.family);
  const View view = widgetView(choice.kind, entry, choice.family)
                        .clipShape(Shape::roundedRectangle(kCornerRadius, RoundedCornerStyle::continuous));
  LayoutTree tree = layout(view, widgetCanvasSize(choice.family));
  const bool live = showsLiveTimer(tree);
  return Placement{choice, std::move(tree), clock_.now(), live};
}

void WidgetBoard::update() {
  host_.update();
  const double second = std::floor(clock_.now().timeIntervalSince1970());
  for (std::size_t index = 0; index < placements_.size(); ++index) {
    const Placement& placement = placements_[index];
    const bool timerAdvanced =
        placement.showsLiveTimer && std::floor(placement.laidOutAt.timeIntervalSince1970()) != second;
    if (changed_[index] || timerAdvanced) refresh(index);
    changed_[index] = false;
  }
}

std::optional<Date> WidgetBoard::nextUpdateDate() const {
  std::optional<Date> next = host_.nextUpdateDate();
  for (const Placement& placement : placements_) {
    if (!placement.showsLiveTimer) continue;
    const Date tick(std::floor(placement.laidOutAt.timeIntervalSince1970()) + 1 + kLiveTimerSlack);
    if (!next || tick < *next) next = tick;
  }
  return next;
}

void WidgetBoard::refresh(std::size_t index) {
  placements_[index] = laidOut(placements_[index].choice);
  if (focus_ && focus_->placement == index) {
    const std::size_t buttons = placements_[index].tree.nodesOfKind(ViewKind::pressTarget).size();
    if (buttons == 0) {
      focus_.reset();
    } else {
      focus_->button = std::min(focus_->button, buttons - 1);
    }
  }
  if (observer_) observer_(index);
}

std::optional<WidgetBoard::FocusedButton> WidgetBoard::focusedButton() const {
  if (!focus_) return std::nullopt;
  const std::vector<const LaidOutNode*> buttons =
      placements_[focus_->placement].tree.nodesOfKind(ViewKind::pressTarget);
  const LaidOutNode& button = *buttons[focus_->button];
  return FocusedButton{focus_->placement, focus_->button, button.frame, outlineOf(button, button.frame)};
}

void WidgetBoard::moveFocus(FocusDirection direction) {
  std::vector<Focus> order;
  std::optional<std::size_t> current;
  for (std::size_t placement = 0; placement < placements_.size(); ++placement) {
    const std::size_t buttons = placements_[placement].tree.nodesOfKind(ViewKind::pressTarget).size();
    for (std::size_t button = 0; button < buttons; ++button) {
      if (focus_ && focus_->placement == placement && focus_->button == button) current = order.size();
      order.push_back(Focus{placement, button});
    }
  }
  if (order.empty()) return setFocus(std::nullopt);
  const bool forward = direction == FocusDirection::forward;
  std::size_t next = forward ? 0 : order.size() - 1;
  if (current) next = (*current + (forward ? 1 : order.size() - 1)) % order.size();
  setFocus(order[next]);
}

void WidgetBoard::clearFocus() { setFocus(std::nullopt); }

void WidgetBoard::setFocus(std::optional<Focus> focus) {
  const std::optional<Focus> previous = focus_;
  focus_ = focus;
  if (!observer_) return;
  if (previous) observer_(previous->placement);
  if (focus && (!previous || previous->placement != focus->placement)) observer_(focus->placement);
}

}  // namespace kestrona
