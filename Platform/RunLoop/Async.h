// Coroutines on the main loop and on serial queues.
//
// An asynchronous function is a coroutine returning asio::awaitable<T>. This
// header, the one of this area that includes Asio, offers:
//
// - spawn(loop, work(args...)): starts a coroutine on the main loop without
//   waiting for it. An exception escaping it leaves MainLoop::run() on the main
//   thread, as from any posted function; it is never swallowed.
// - spawn(loop, work(args...), completion): the same, and then calls
//   completion on the main thread with the exception (or null) and the value.
//
// Continuation<T> needs a value type; for a coroutine without a result use
// std::monostate.
// - co_await on(queue, work(args...)): runs the coroutine on the serial queue
//   and resumes the awaiting coroutine on its own executor (the main loop, for
//   coroutines started there), with work's value or its exception.
//   co_await on(loop, work(args...)) does the same towards the main loop.
// - executor(loop), executor(queue): for calling Asio directly.
// - co_await withContinuation<T>(start): suspends the caller, calls start with
//   a Continuation, and resumes the caller on its own executor when the
//   Continuation is resumed, from any thread. It bridges completion-handler
//   APIs into coroutines.
//
// GCC 12 rules for coroutines (real miscompilations): pass the awaitable made
// by a function that takes its arguments by value, never a lambda with
// captures; never co_await inside a braced initialiser list or inside ?:.
//
// Threading: spawn() from any thread; on() and withContinuation() inside
// coroutines only.
#pragma once

#include <asio/awaitable.hpp>
#include <asio/co_spawn.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/use_awaitable.hpp>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>

#include "Platform/Foundation/FatalError.h"
#include "Platform/RunLoop/MainLoop.h"
#include "Platform/RunLoop/SerialQueue.h"

namespace kestrona {

// The executors that run on the loop's thread and on the queue's thread, for
// Asio calls made directly: co_spawn(executor(queue), work(x), use_awaitable).
inline asio::io_context::executor_type executor(MainLoop& loop) { return loop.context().get_executor(); }
inline asio::io_context::executor_type executor(SerialQueue& queue) { return queue.context().get_executor(); }

inline void spawn(MainLoop& loop, asio::awaitable<void> work) {
  asio::co_spawn(loop.context(), std::move(work), [](std::exception_ptr error) {
    if (error) std::rethrow_exception(error);
  });
}

// completion is called on the main thread as completion(error, value), or
// completion(error) for a coroutine without a value; error is null on success
// (and value then holds the result), else value is default-constructed.
template <typename T, typename Completion>
void spawn(MainLoop& loop, asio::awaitable<T> work, Completion completion) {
  asio::co_spawn(loop.context(), std::move(work), std::move(completion));
}

template <typename T>
asio::awaitable<T> on(SerialQueue& queue, asio::awaitable<T> work) {
  return asio::co_spawn(queue.context(), std::move(work), asio::use_awaitable);
}

// Runs the coroutine on the main loop, for work that belongs to the main
// actor, and resumes the awaiting coroutine on its own executor.
template <typename T>
asio::awaitable<T> on(MainLoop& loop, asio::awaitable<T> work) {
  return asio::co_spawn(loop.context(), std::move(work), asio::use_awaitable);
}

// The resuming end of withContinuation(). Resume it exactly once: a second
// resume is a programming error and ends the process; a Continuation
// destroyed unresumed (every copy) resumes the awaiter with an exception of
// type std::future_error (broken_promise), so nobody waits forever.
// Copies share one state. Thread-safe.
template <typename T>
class Continuation {
 public:
  using Resume = std::function<void(std::exception_ptr, std::optional<T>)>;

  explicit Continuation(Resume resume) : state_(std::make_shared<State>(std::move(resume))) {}

  void resume(T value) const { state_->finish(nullptr, std::move(value)); }
  void resume(std::exception_ptr error) const { state_->finish(error, std::nullopt); }

 private:
  struct State {
    explicit State(Resume r) : resume(std::move(r)) {}
    ~State() {
      if (resume) resume(std::make_exception_ptr(std::future_error(std::future_errc::broken_promise)), std::nullopt);
    }
    void finish(std::exception_ptr error, std::optional<T> value) {
      Resume taken;
      {
        std::lock_guard lock(mutex);
        if (!resume) fatalError("a continuation was resumed twice");
        taken = std::move(resume);
        resume = nullptr;
      }
      taken(error, std::move(value));
    }
    std::mutex mutex;
    Resume resume;
  };
  std::shared_ptr<State> state_;
};

template <typename T>
asio::awaitable<T> withContinuation(std::function<void(Continuation<T>)> start) {
  auto initiation = [start = std::move(start)](auto handler) {
    auto executor = asio::get_associated_executor(handler);
    auto shared = std::make_shared<decltype(handler)>(std::move(handler));
    start(Continuation<T>([executor, shared](std::exception_ptr error, std::optional<T> value) {
      asio::post(executor, [shared, error, value = std::move(value)]() mutable {
        (*shared)(error, std::move(value));
      });
    }));
  };
  std::optional<T> value =
      co_await asio::async_initiate<const asio::use_awaitable_t<>&, void(std::exception_ptr, std::optional<T>)>(
          std::move(initiation), asio::use_awaitable);
  co_return std::move(*value);
}

}  // namespace kestrona
