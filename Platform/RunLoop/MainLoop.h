// The main loop: where "the main actor" and "the main queue" run.
//
// A MainLoop is an event loop that one thread runs: run() returns only after
// stop(), even when no work is waiting. Work arrives with post() from any
// thread and runs on the loop's thread, one item at a time, in the order it
// was posted. The process has one, MainLoop::main(), run by the process's main
// thread; tests make their own.
//
// The loop's thread ("the main thread" of this loop) is the thread that made
// the loop, until another thread calls run() or poll(): from then on it is
// that thread. isMainThread() tells whether the caller is it.
//
// performAndWait(fn) runs fn on the loop and blocks the caller until it has
// run, returning its value or rethrowing its exception. Called on the main
// thread, it runs fn at once, inline. Called from another thread it waits
// for the loop to reach fn: it deadlocks when the loop's thread is itself
// blocked waiting for the caller (for instance in SerialQueue::sync on the
// caller's queue), or when the loop is never run. A main thread suspended in
// a coroutine that awaits the caller is not blocked, and is fine.
//
// An exception escaping a posted function leaves run() (or poll()) on the
// main thread; the loop can be run again afterwards.
//
// This header does not include Asio. Coroutines on the loop are started with
// the helpers of Platform/RunLoop/Async.h; timers are in RunLoopTimer.h.
//
// Threading: post(), dispatch(), stop(), isMainThread() and performAndWait() from any
// thread; run(), poll() and restart() from one thread at a time. The loop must
// outlive everything posted to it; destroying it destroys work not yet run.
#pragma once

#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

#include "Platform/RunLoop/SettlePromise.h"

namespace asio {
class io_context;
}

namespace kestrona {

class MainLoop {
 public:
  MainLoop();
  ~MainLoop();
  MainLoop(const MainLoop&) = delete;
  MainLoop& operator=(const MainLoop&) = delete;

  // The process's main loop, made on first use (thread-safe). Its thread is
  // the one that first asks for it, unless another thread runs it.
  static MainLoop& main();

  // Runs posted work on the calling thread until stop(). Returns at once when
  // stop() came before and restart() did not follow.
  void run();
  // Runs the work that is ready now on the calling thread, without waiting;
  // returns the number of items run.
  std::size_t poll();
  // Makes run() return as soon as the item being run (if any) finishes. Work
  // not yet run stays queued for a later run() after restart().
  void stop();
  bool stopped() const;
  // Prepares a stopped loop to run again.
  void restart();

  // Queues work to run on the loop. Never runs it inline.
  void post(std::function<void()> work);
  // Runs work at once when called on the main thread, else posts it: "on the
  // main thread, directly when already there, otherwise asynchronously".
  void dispatch(std::function<void()> work);

  bool isMainThread() const noexcept;

  template <typename Function>
  std::invoke_result_t<Function> performAndWait(Function&& function);

  // The underlying Asio context, for Async.h and RunLoopTimer.
  asio::io_context& context() noexcept;

 private:
  void becomeMainThread() noexcept;

  struct State;
  std::unique_ptr<State> state_;
};

template <typename Function>
std::invoke_result_t<Function> MainLoop::performAndWait(Function&& function) {
  using Result = std::invoke_result_t<Function>;
  if (isMainThread()) return std::forward<Function>(function)();
  // The work owns the promise: a loop destroyed with the work unrun breaks it,
  // and the caller gets std::future_error instead of waiting forever.
  auto promise = std::make_shared<std::promise<Result>>();
  std::future<Result> future = promise->get_future();
  post([promise, &function] { detail::settlePromise(*promise, std::forward<Function>(function)); });
  return future.get();
}

}  // namespace kestrona
