// The shared step of the blocking hand-overs (MainLoop::performAndWait,
// SerialQueue::sync): the work runs on the other thread and settles the
// promise the caller waits on with its value, or with what it threw, so the
// caller sees either as if it had run the work itself.
#pragma once

#include <exception>
#include <future>
#include <type_traits>
#include <utility>

namespace kestrona::detail {

template <typename Result, typename Function>
void settlePromise(std::promise<Result>& promise, Function&& function) {
  try {
    if constexpr (std::is_void_v<Result>) {
      std::forward<Function>(function)();
      promise.set_value();
    } else {
      promise.set_value(std::forward<Function>(function)());
    }
  } catch (...) {
    promise.set_exception(std::current_exception());
  }
}

}  // namespace kestrona::detail
