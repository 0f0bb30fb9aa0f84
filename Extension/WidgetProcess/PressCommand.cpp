// kestrona-widgets press KIND [--family F] (--x X --y Y | --plate N)
// [--now SECONDS]: a press on the widget as the widget host shows it at that
// moment. The press lands at the point (X, Y), in points from the widget's
// top-left corner, or in the middle of the recent tasks widget's plate N,
// counted from 1, row by row, among the plates shown.
//
// What the press hits decides what happens, as on the desktop: the press
// goes through a WidgetPresser, so a press target runs its intent through
// the registered timer-intent host (the deep-link host the bundle installs,
// which opens the deep link at the containing application) and a link is
// reported, not opened. The command prints one JSON object: "kind",
// "family", "x", "y", then the outcome's fields (pressOutcomeJSON() in
// WidgetPresser.h). The host cannot tell whether a pause was taken (it logs
// a failure), so a pause is always performed. The status is 1 when the
// intent failed.
#include <cmath>
#include <optional>
#include <ostream>

#include <nlohmann/json.hpp>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/EntryRequest.h"
#include "Extension/WidgetProcess/WidgetPresser.h"
#include "Extension/WidgetProcess/WidgetViews.h"
#include "Platform/RunLoop/MainLoop.h"
#include "SharedWidgets/Widgets/RecentTasksWidget.h"

namespace kestrona {
namespace {

using Code = CommandLineErrorCode;

// Presses tree at point and runs the main loop until the press has ended.
WidgetPressOutcome pressAndWait(const LayoutTree& tree, Point point) {
  MainLoop& loop = MainLoop::main();
  std::optional<WidgetPressOutcome> outcome;
  WidgetPresser presser(loop);
  presser.press(tree, point, [&](WidgetPressOutcome ended) {
    outcome = std::move(ended);
    loop.stop();
  });
  while (!outcome) loop.run();
  loop.restart();
  return std::move(*outcome);
}

Point platePoint(const EntryRequest& request, const LayoutTree& tree, const std::string& text) {
  if (request.configuration().kind() != RecentTasksWidget::kind) {
    throw CommandLineError(Code::unexpectedArgument, "--plate is for the recent tasks widget only");
  }
  const std::vector<const LaidOutNode*> plates = tree.nodesOfKind(ViewKind::pressTarget);
  const double number = parseNumberOption("--plate", text);
  if (number != std::floor(number) || number < 1 || number > static_cast<double>(plates.size())) {
    throw CommandLineError(Code::badValue, "--plate takes a plate from 1 to " + std::to_string(plates.size()) +
                                               " (the plates shown), not '" + text + "'");
  }
  const Rect& frame = plates[static_cast<std::size_t>(number) - 1]->frame;
  return {frame.midX(), frame.midY()};
}

Point pressPoint(const EntryRequest& request, const LayoutTree& tree) {
  const std::string* x = request.option("--x");
  const std::string* y = request.option("--y");
  const std::string* plate = request.option("--plate");
  if (plate && (x || y)) {
    throw CommandLineError(Code::conflictingOptions, "press takes either --x X --y Y or --plate N, not both");
  }
  if (plate) return platePoint(request, tree, *plate);
  if (!x || !y) throw CommandLineError(Code::missingValue, "press needs either --x X --y Y or --plate N");
  const Point point{parseNumberOption("--x", *x), parseNumberOption("--y", *y)};
  const Size canvas = tree.canvasSize();
  if (point.x < 0 || point.y < 0 || point.x > canvas.width || point.y > canvas.height) {
    throw CommandLineError(Code::badValue, "the point (" + numberText(point.x) + ", " + numberText(point.y) +
                                               ") lies outside the widget's " + numberText(canvas.width) + " × " +
                                               numberText(canvas.height) + " points");
  }
  return point;
}

}  // namespace

int runPressCommand(const CommandInvocation& invocation) {
  std::unique_ptr<EntryRequest> request =
      EntryRequest::parse(invocation.bundle, invocation.arguments, {"--x", "--y", "--plate"});
  const LayoutTree tree = layOutWidget(request->configuration().kind(), request->currentEntry(), request->family());
  const Point point = pressPoint(*request, tree);
  request->warnAboutDataFile(invocation.errors);

  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  json["kind"] = request->configuration().kind();
  json["family"] = std::string(rawValue(request->family()));
  json["x"] = point.x;
  json["y"] = point.y;
  const WidgetPressOutcome outcome = pressAndWait(tree, point);
  json.update(pressOutcomeJSON(outcome));
  const int status = outcome.failure ? 1 : 0;
  invocation.output << json.dump() << "\n";
  return status;
}

}  // namespace kestrona
