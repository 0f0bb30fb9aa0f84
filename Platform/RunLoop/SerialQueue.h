// A serial queue: a thread of its own that runs work one item at a time.
//
// Work runs in the order the queue received it: two items posted by the same
// thread run in their posting order; items posted by different threads run in
// the order their async() calls took effect, never concurrently.
//
// sync(fn) runs fn on the queue and blocks the caller until it has run,
// returning its value or rethrowing its exception. Calling sync() from the
// queue's own thread would wait for itself: it is a programming error and ends
// the process. sync() also deadlocks when the queue's current work waits for
// the caller (for instance with MainLoop::performAndWait while the main thread
// is in sync()).
//
// Work given to async() must not let an exception escape: that is a
// programming error and ends the process, naming the queue. Coroutines run on
// the queue's executor (Async.h) deliver their exceptions to whoever awaits
// them instead.
//
// Shutdown: shutdown(drain) stops the queue from taking new work, runs every
// item already queued (and what those items queue in turn), then joins the
// thread. shutdown(cancel) lets the running item finish and destroys the
// others unrun. The destructor drains. After shutdown, async() drops its work
// and sync() throws SerialQueueError with code shutDown, as
// does a sync() whose work a cancel destroyed. Coroutines waiting on work
// that a cancel destroyed are destroyed, never resumed.
//
// Threading: every member from any thread, except shutdown() and the
// destructor, which must not run on the queue itself (that ends the process).
#pragma once

#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/RunLoop/SettlePromise.h"

namespace asio {
class io_context;
}

namespace kestrona {

enum class SerialQueueErrorCode { shutDown = 0 };

// Domain "SerialQueueError".
class SerialQueueError : public CodedError<SerialQueueErrorCode> {
 public:
  SerialQueueError(SerialQueueErrorCode code, const std::string& queueName);
};

class SerialQueue {
 public:
  enum class Shutdown { drain, cancel };

  // Starts the queue's thread. name is for logs and errors.
  explicit SerialQueue(std::string name);
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  const std::string& name() const noexcept { return name_; }

  // Queues work and returns at once. Dropped after shutdown.
  void async(std::function<void()> work);

  template <typename Function>
  std::invoke_result_t<Function> sync(Function&& function);

  // Whether the caller runs on this queue's thread.
  bool isCurrent() const noexcept;

  // Idempotent: a call while another is under way waits for it to finish.
  void shutdown(Shutdown mode = Shutdown::drain);

  // The underlying Asio context, for Async.h: its executor runs on the queue.
  asio::io_context& context() noexcept;

 private:
  // Queues work unless shut down; returns whether it was queued.
  bool enqueue(std::function<void()> work);

  std::string name_;
  struct State;
  std::unique_ptr<State> state_;
};

template <typename Function>
std::invoke_result_t<Function> SerialQueue::sync(Function&& function) {
  using Result = std::invoke_result_t<Function>;
  if (isCurrent()) {
    fatalError("SerialQueue::sync called on its own queue \"" + name_ + "\"; it would wait for itself");
  }
  // The work owns the promise, so that work destroyed unrun by a cancel
  // breaks it and wakes the caller.
  auto promise = std::make_shared<std::promise<Result>>();
  std::future<Result> future = promise->get_future();
  bool queued = enqueue([promise, &function] { detail::settlePromise(*promise, std::forward<Function>(function)); });
  if (!queued) throw SerialQueueError(SerialQueueErrorCode::shutDown, name_);
  try {
    return future.get();
  } catch (const std::future_error&) {
    throw SerialQueueError(SerialQueueErrorCode::shutDown, name_);
  }
}

}  // namespace kestrona
