// The timer intent: what a widget's start or pause button runs.
//
// Two parameters, both optional: action ("Action") and taskId ("Task ID").
// perform(), on the main loop, checks in this order and stops at the first
// that applies:
//   1. no host in TimerWidgetIntentHost::current(): throws
//      cannotInitializeTimer (the parameters are not looked at);
//   2. action is pause: awaits the host's pauseTimer() and succeeds, whatever
//      taskId holds;
//   3. action is unset: throws actionIsRequired;
//   4. action is start and taskId is unset: throws taskIdNotPassed (an empty
//      taskId is passed on: only absence is refused);
//   5. awaits the host's startTimer(taskId): false throws taskNotFound.
// taskNotFound thus means that the command could not be handed over, not that
// anybody looked for the task.
//
// The presentation statics are plain texts. openAppWhenRun() and
// isDiscoverable() are process-wide settings, false at start.
//
// Threading: a value, made anywhere; perform() on the main loop. The
// settable statics are meant to be set at start-up, before intents run.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Foundation/Error.h"
#include "Platform/Intents/AppIntent.h"
#include "Platform/Intents/IntentParameter.h"
#include "WidgetData/TimerIntent/TimerActionType.h"

namespace kestrona {

class TimerWidgetAppIntent {
 public:
  enum class AppIntentErrorCode { taskIdNotPassed = 0, taskNotFound, cannotInitializeTimer, actionIsRequired };

  // Domain "TimerWidgetAppIntent.AppIntentError"; the description is the text
  // the user sees.
  class AppIntentError : public CodedError<AppIntentErrorCode> {
   public:
    explicit AppIntentError(AppIntentErrorCode code);
  };

  TimerWidgetAppIntent() = default;
  TimerWidgetAppIntent(TimerActionType action, std::optional<std::string> taskId);

  static std::string_view title() { return "Timer"; }
  static std::string_view description() { return "Start or pause timer from a widget"; }
  // The fixed summary; no parameter is placed in it.
  static std::string_view parameterSummary() { return "Start or pause timer from a widget"; }

  static bool openAppWhenRun();
  static void setOpenAppWhenRun(bool value);
  static bool isDiscoverable();
  static void setIsDiscoverable(bool value);

  IntentParameter<TimerActionType> action{"Action"};
  IntentParameter<std::string> taskId{"Task ID"};

  asio::awaitable<IntentResult> perform() const;

  friend bool operator==(const TimerWidgetAppIntent&, const TimerWidgetAppIntent&) = default;
};

static_assert(AppIntent<TimerWidgetAppIntent>);

}  // namespace kestrona
