// What the timer intent hands its command to.
//
// A host lives in the widget process and passes a timer command on to the
// place that runs the timer. startTimer(taskId) completes with true only when
// it has handed the command over, and false otherwise (the intent then
// fails); pauseTimer() has no way to report failure. What happens to the
// command afterwards (whether the task exists, whether the timer started) is
// not the host's to know.
//
// Hosts are reference types held by std::shared_ptr (TimerWidgetIntentHost
// holds the process's one). Both operations are coroutines that run on the
// main loop and may suspend; they take their arguments by value.
#pragma once

#include <string>

#include <asio/awaitable.hpp>

namespace kestrona {

class TimerWidgetIntentHosting {
 public:
  virtual ~TimerWidgetIntentHosting() = default;

  virtual asio::awaitable<bool> startTimer(std::string taskId) = 0;
  virtual asio::awaitable<void> pauseTimer() = 0;

 protected:
  TimerWidgetIntentHosting() = default;
  TimerWidgetIntentHosting(const TimerWidgetIntentHosting&) = delete;
  TimerWidgetIntentHosting& operator=(const TimerWidgetIntentHosting&) = delete;
};

}  // namespace kestrona
