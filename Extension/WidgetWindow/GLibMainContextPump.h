// GLib's main context, run by our main loop.
//
// The widget window has two event loops on one thread: our MainLoop (Asio),
// where intents, timers and the widget host run, and GLib's main context,
// where GTK delivers input, drawing and settings. The MainLoop is the one
// that runs; a pump does on it what g_main_context_iteration() does, one
// step at a time:
//
//   1. prepare and query the context: its file descriptors and a timeout;
//   2. wait, without blocking the loop, until one of those descriptors is
//      ready (each is registered with the loop's reactor for as long as the
//      step waits) or the timeout has passed (a timer of the loop);
//   3. poll the descriptors once without waiting, to learn exactly which
//      are ready, then check and dispatch the context's sources;
//   4. post the next step to the loop.
//
// Other work of the loop runs between the steps, so neither loop starves the
// other, and while both are idle the thread sleeps in the reactor: a step
// that waits posts nothing. A source attached from another thread wakes the
// step through the context's own wake-up descriptor, as it would wake
// g_main_context_iteration(). GLib does not wake itself for its owner
// thread, which it takes to be busy rather than waiting: code that runs on
// the loop outside GLib's dispatch (a loop timer, an intent's completion) and
// attaches sources, such as gtk_widget_queue_draw() does, calls
// g_main_context_wakeup() afterwards, or its sources wait for the step's
// next wake.
//
// The pump owns (acquires) the context from start() until it is destroyed;
// GLib sources then run on the loop's thread, inside the loop's run().
// start() throws GLibMainContextPumpError (cannotAcquire) when another
// thread owns the context.
//
// Threading: start, run and destroy on the loop's thread. The loop must
// outlive the pump, and the pump the loop's last run() that may reach it.
#pragma once

#include <memory>
#include <string_view>

#include "Platform/Foundation/Error.h"
#include "Platform/RunLoop/MainLoop.h"

// GLib's context type, declared as GLib declares it.
typedef struct _GMainContext GMainContext;

namespace kestrona {

enum class GLibMainContextPumpErrorCode { cannotAcquire };

class GLibMainContextPumpError : public CodedError<GLibMainContextPumpErrorCode> {
 public:
  static constexpr std::string_view kDomain = "GLibMainContextPumpError";

  explicit GLibMainContextPumpError(GLibMainContextPumpErrorCode code);
};

class GLibMainContextPump {
 public:
  static std::unique_ptr<GLibMainContextPump> start(MainLoop& loop, GMainContext* context);
  ~GLibMainContextPump();
  GLibMainContextPump(const GLibMainContextPump&) = delete;
  GLibMainContextPump& operator=(const GLibMainContextPump&) = delete;

  // Internal; public so that the source file's handlers can name it.
  struct State;

 private:
  explicit GLibMainContextPump(std::shared_ptr<State> state) : state_(std::move(state)) {}

  std::shared_ptr<State> state_;
};

}  // namespace kestrona
