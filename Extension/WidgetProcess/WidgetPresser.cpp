#include "Extension/WidgetProcess/WidgetPresser.h"

#include <deque>
#include <variant>

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/ExceptionDescription.h"
#include "Platform/Intents/AppIntent.h"
#include "WidgetData/TimerIntent/TimerWidgetIntentHost.h"

namespace kestrona {
namespace {

// Passes each command on to the host it stands in front of, and keeps what
// was asked, so that the outcome can say which deep link the press opened.
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

}  // namespace

struct WidgetPresser::State : std::enable_shared_from_this<State> {
  struct Pending {
    // What the press hit: nothing, a link, or a copy of the target's intent.
    std::variant<std::monostate, PressLink, AnyAppIntent> action;
    Completion completion;
  };

  explicit State(MainLoop& mainLoop) : loop(mainLoop) {}

  void startNext() {
    if (busy || closed || queue.empty()) return;
    busy = true;
    Pending next = std::move(queue.front());
    queue.pop_front();
    if (AnyAppIntent* intent = std::get_if<AnyAppIntent>(&next.action)) {
      runIntent(*intent, std::move(next.completion));
      return;
    }
    WidgetPressOutcome outcome;
    if (PressLink* link = std::get_if<PressLink>(&next.action)) {
      outcome.pressed = WidgetPressOutcome::Pressed::link;
      outcome.link = *link;
    }
    std::weak_ptr<State> weak = weak_from_this();
    loop.post([weak, outcome = std::move(outcome), completion = std::move(next.completion)] {
      if (std::shared_ptr<State> self = weak.lock()) self->finish(outcome, completion);
    });
  }

  void runIntent(const AnyAppIntent& intent, Completion completion) {
    registered = TimerWidgetIntentHost::current();
    if (registered) {
      recording = std::make_shared<RecordingIntentHost>(registered);
      TimerWidgetIntentHost::setCurrent(recording);
    }
    WidgetPressOutcome outcome;
    outcome.pressed = WidgetPressOutcome::Pressed::intent;
    outcome.intentTitle = std::string(intent.title());
    std::weak_ptr<State> weak = weak_from_this();
    intent.run(loop, [weak, outcome = std::move(outcome),
                      completion = std::move(completion)](std::exception_ptr failure) mutable {
      std::shared_ptr<State> self = weak.lock();
      if (!self) return;
      if (self->recording) outcome.deepLink = self->recording->deepLink;
      outcome.failure = failure;
      self->restoreHost();
      self->finish(outcome, completion);
    });
  }

  void finish(const WidgetPressOutcome& outcome, const Completion& completion) {
    busy = false;
    if (closed) return;
    // The completion may destroy the presser; this state lives on until
    // the caller's reference goes, and closed stops the queue.
    completion(outcome);
    startNext();
  }

  void restoreHost() {
    if (recording && TimerWidgetIntentHost::current() == recording) TimerWidgetIntentHost::setCurrent(registered);
    recording.reset();
    registered.reset();
  }

  MainLoop& loop;
  std::deque<Pending> queue;
  bool busy = false;
  bool closed = false;
  std::shared_ptr<TimerWidgetIntentHosting> registered;
  std::shared_ptr<RecordingIntentHost> recording;
};

WidgetPresser::WidgetPresser(MainLoop& loop) : state_(std::make_shared<State>(loop)) {}

WidgetPresser::~WidgetPresser() {
  state_->closed = true;
  state_->queue.clear();
  state_->restoreHost();
}

void WidgetPresser::press(const LayoutTree& tree, Point point, Completion completion) {
  State::Pending pending{std::monostate{}, std::move(completion)};
  if (std::optional<PressAction> action = hitTest(tree, point)) {
    if (const PressLink* link = std::get_if<PressLink>(&*action)) {
      pending.action = *link;
    } else {
      pending.action = *std::get<PressIntent>(*action).intent;
    }
  }
  state_->queue.push_back(std::move(pending));
  state_->startNext();
}

nlohmann::ordered_json pressOutcomeJSON(const WidgetPressOutcome& outcome) {
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  switch (outcome.pressed) {
    case WidgetPressOutcome::Pressed::nothing: json["pressed"] = "nothing"; return json;
    case WidgetPressOutcome::Pressed::link:
      json["pressed"] = "link";
      json["url"] = outcome.link->url.absoluteString();
      json["isWidgetURL"] = outcome.link->isWidgetURL;
      return json;
    case WidgetPressOutcome::Pressed::intent: break;
  }
  json["pressed"] = "intent";
  json["intent"] = outcome.intentTitle;
  if (outcome.deepLink) {
    std::optional<std::string> taskId = outcome.deepLink->taskId();
    json["command"] = taskId ? "start" : "pause";
    if (taskId) json["taskId"] = *taskId;
    if (std::optional<URL> url = outcome.deepLink->url()) json["deepLink"] = url->absoluteString();
  }
  if (!outcome.failure) {
    json["result"] = "performed";
    return json;
  }
  json["result"] = "failed";
  json["error"] = failureJSON(outcome.failure);
  return json;
}

nlohmann::ordered_json failureJSON(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const Error& error) {
    return {{"domain", error.domain()}, {"code", error.code()}, {"description", error.localizedDescription()}};
  } catch (...) {
    return {{"description", exceptionDescription(std::current_exception())}};
  }
}

}  // namespace kestrona
