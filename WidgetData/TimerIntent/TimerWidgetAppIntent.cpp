#include "WidgetData/TimerIntent/TimerWidgetAppIntent.h"

#include <atomic>
#include <memory>

#include "WidgetData/TimerIntent/TimerWidgetIntentHost.h"

namespace kestrona {
namespace {

std::atomic<bool> openAppWhenRunSetting{false};
std::atomic<bool> isDiscoverableSetting{false};

std::string errorText(TimerWidgetAppIntent::AppIntentErrorCode code) {
  using Code = TimerWidgetAppIntent::AppIntentErrorCode;
  switch (code) {
    case Code::taskIdNotPassed:
      return "Task ID not passed";
    case Code::taskNotFound:
      return "Task not found";
    case Code::cannotInitializeTimer:
      return "Cannot initialize timer";
    case Code::actionIsRequired:
      return "Action is required";
  }
  return "Cannot initialize timer";
}

}  // namespace

TimerWidgetAppIntent::AppIntentError::AppIntentError(AppIntentErrorCode code)
    : CodedError("TimerWidgetAppIntent.AppIntentError", code, errorText(code)) {}

TimerWidgetAppIntent::TimerWidgetAppIntent(TimerActionType actionValue, std::optional<std::string> taskIdValue) {
  action = actionValue;
  taskId = std::move(taskIdValue);
}

bool TimerWidgetAppIntent::openAppWhenRun() { return openAppWhenRunSetting.load(); }
void TimerWidgetAppIntent::setOpenAppWhenRun(bool value) { openAppWhenRunSetting.store(value); }
bool TimerWidgetAppIntent::isDiscoverable() { return isDiscoverableSetting.load(); }
void TimerWidgetAppIntent::setIsDiscoverable(bool value) { isDiscoverableSetting.store(value); }

namespace {

// Takes the intent by value: the caller's intent may be gone by the time the
// coroutine first runs.
asio::awaitable<IntentResult> performIntent(TimerWidgetAppIntent intent) {
  using Error = TimerWidgetAppIntent::AppIntentError;
  using Code = TimerWidgetAppIntent::AppIntentErrorCode;

  std::shared_ptr<TimerWidgetIntentHosting> host = TimerWidgetIntentHost::current();
  if (!host) throw Error(Code::cannotInitializeTimer);

  std::optional<TimerActionType> action = intent.action.value();
  if (action == TimerActionType::pause) {
    co_await host->pauseTimer();
    co_return IntentResult::result();
  }
  if (!action) throw Error(Code::actionIsRequired);

  std::optional<std::string> taskId = intent.taskId.value();
  if (!taskId) throw Error(Code::taskIdNotPassed);
  bool handedOver = co_await host->startTimer(*taskId);
  if (!handedOver) throw Error(Code::taskNotFound);
  co_return IntentResult::result();
}

}  // namespace

asio::awaitable<IntentResult> TimerWidgetAppIntent::perform() const { return performIntent(*this); }

}  // namespace kestrona
