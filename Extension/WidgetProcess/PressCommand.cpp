// kestrona-widgets press KIND [--family F] (--x X --y Y | --plate N)
// [--now SECONDS]: a press on the widget as the widget host shows it at that
// moment. The press lands at the point (X, Y), in points from the widget's
// top-left corner, or in the middle of the recent tasks widget's plate N,
// counted from 1, row by row, among the plates shown.
//
// What the press hits decides what happens, as on the desktop (HitTesting.h):
// a press target runs its intent on the main loop through the registered
// timer-intent host (the deep-link host the bundle installs, which opens the
// deep link at the containing application), and the command prints one JSON
// object saying what was asked of the host and how the intent ended:
//
//   {"kind", "family", "x", "y", "pressed": "intent", "intent": "Timer",
//    "command": "start" | "pause", "taskId" (start only), "deepLink",
//    "result": "performed" | "failed",
//    "error": {"domain", "code", "description"} (failed only)}
//
// "command" and "deepLink" are absent when the intent failed before it
// reached the host. The host cannot tell whether a pause was taken (it logs
// a failure), so a pause is always performed. A press anywhere else follows
// a link: {"pressed": "link", "url", "isWidgetURL"}; a press that nothing
// takes: {"pressed": "nothing"}. The status is 1 when the intent failed.
#include <cmath>
#include <exception>
#include <ostream>

#include <nlohmann/json.hpp>

#include "Extension/WidgetProcess/CommandLine.h"
#include "Extension/WidgetProcess/EntryRequest.h"
#include "Extension/WidgetProcess/WidgetViews.h"
#include "Platform/Intents/AppIntent.h"
#include "Platform/RunLoop/MainLoop.h"
#include "Platform/View/HitTesting.h"
#include "SharedWidgets/Widgets/RecentTasksWidget.h"
#include "WidgetData/TimerIntent/TimerWidgetDeepLink.h"
#include "WidgetData/TimerIntent/TimerWidgetIntentHost.h"

namespace kestrona {
namespace {

using Code = CommandLineErrorCode;

// Passes each command on to the host it stands in front of, and keeps what
// was asked, so that the command can say which deep link the press opened.
class RecordingIntentHost final : public TimerWidgetIntentHosting {
 public:
  explicit RecordingIntentHost(std::shared_ptr<TimerWidgetIntentHosting> host) : host_(std::move(host)) {}

  asio::awaitable<bool> startTimer(std::string taskId) override {
    deepLink = TimerWidgetDeepLink::start(taskId);
    bool handedOver = co_await host_->startTimer(std::move(taskId));
    co_return handedOver;
  }

  asio::awaitable<void> pauseTimer() override {
    deepLink = TimerWidgetDeepLink::pause();
    co_await host_->pauseTimer();
  }

  std::optional<TimerWidgetDeepLink> deepLink;

 private:
  std::shared_ptr<TimerWidgetIntentHosting> host_;
};

// Puts recording in front of the registered host for as long as it lives.
class ScopedRecordingHost {
 public:
  ScopedRecordingHost() : previous_(TimerWidgetIntentHost::current()) {
    if (previous_) {
      recording_ = std::make_shared<RecordingIntentHost>(previous_);
      TimerWidgetIntentHost::setCurrent(recording_);
    }
  }
  ~ScopedRecordingHost() {
    if (previous_) TimerWidgetIntentHost::setCurrent(previous_);
  }
  ScopedRecordingHost(const ScopedRecordingHost&) = delete;
  ScopedRecordingHost& operator=(const ScopedRecordingHost&) = delete;

  std::optional<TimerWidgetDeepLink> deepLink() const { return recording_ ? recording_->deepLink : std::nullopt; }

 private:
  std::shared_ptr<TimerWidgetIntentHosting> previous_;
  std::shared_ptr<RecordingIntentHost> recording_;
};

// Runs intent on the main loop until it ends; its failure, if any.
std::exception_ptr runIntent(const AnyAppIntent& intent) {
  MainLoop& loop = MainLoop::main();
  std::exception_ptr failure;
  bool finished = false;
  intent.run(loop, [&](std::exception_ptr error) {
    failure = error;
    finished = true;
    loop.stop();
  });
  while (!finished) loop.run();
  loop.restart();
  return failure;
}

Point platePoint(const EntryRequest& request, const LayoutTree& tree, const std::string& text) {
  if (request.configuration().kind() != RecentTasksWidget::kind) {
    throw CommandLineError(Code::unexpectedArgument, "--plate is for the recent tasks widget only");
  }
  const double number = parseNumberOption("--plate", text);
  const std::vector<const LaidOutNode*> plates = tree.nodesOfKind(ViewKind::pressTarget);
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
  if (plate && !x && !y) return platePoint(request, tree, *plate);
  if (!x || !y || plate) throw CommandLineError(Code::missingValue, "press needs either --x X --y Y or --plate N");
  const Point point{parseNumberOption("--x", *x), parseNumberOption("--y", *y)};
  const Size canvas = tree.canvasSize();
  if (point.x < 0 || point.y < 0 || point.x > canvas.width || point.y > canvas.height) {
    throw CommandLineError(Code::badValue, "the point lies outside the widget's " + std::to_string(canvas.width) +
                                               " x " + std::to_string(canvas.height) + " points");
  }
  return point;
}

}  // namespace

int runPressCommand(const CommandInvocation& invocation) {
  std::unique_ptr<EntryRequest> request =
      EntryRequest::parse(invocation.bundle, invocation.arguments, {"--x", "--y", "--plate"});
  const LayoutTree tree = layOutWidget(request->configuration().kind(), request->currentEntry(), request->family());
  const Point point = pressPoint(*request, tree);

  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  json["kind"] = request->configuration().kind();
  json["family"] = std::string(rawValue(request->family()));
  json["x"] = point.x;
  json["y"] = point.y;
  int status = 0;
  std::optional<PressAction> action = hitTest(tree, point);
  if (!action) {
    json["pressed"] = "nothing";
  } else if (const PressLink* link = std::get_if<PressLink>(&*action)) {
    json["pressed"] = "link";
    json["url"] = link->url.absoluteString();
    json["isWidgetURL"] = link->isWidgetURL;
  } else {
    const AnyAppIntent& intent = *std::get<PressIntent>(*action).intent;
    json["pressed"] = "intent";
    json["intent"] = std::string(intent.title());
    ScopedRecordingHost recording;
    std::exception_ptr failure = runIntent(intent);
    if (std::optional<TimerWidgetDeepLink> deepLink = recording.deepLink()) {
      std::optional<std::string> taskId = deepLink->taskId();
      json["command"] = taskId ? "start" : "pause";
      if (taskId) json["taskId"] = *taskId;
      if (std::optional<URL> url = deepLink->url()) json["deepLink"] = url->absoluteString();
    }
    if (!failure) {
      json["result"] = "performed";
    } else {
      status = 1;
      json["result"] = "failed";
      try {
        std::rethrow_exception(failure);
      } catch (const Error& error) {
        json["error"] = {
            {"domain", error.domain()}, {"code", error.code()}, {"description", error.localizedDescription()}};
      }
    }
  }
  invocation.output << json.dump() << "\n";
  return status;
}

}  // namespace kestrona
