// A subject that holds a current value and never fails.
//
// send(value) stores value and hands it to every subscriber, synchronously,
// in the order they subscribed. A new subscriber gets the current value at
// once, when it subscribes, and then every value sent after. Cancelling a
// subscription (its AnyCancellable) stops its deliveries, also within a
// send already under way; the subject may be gone by then.
//
// Threading: send and subscribe from any thread; receivers run on the
// sending (or subscribing) thread, without the subject's lock held, so they
// may send, subscribe and cancel.
#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "Platform/Observation/Cancellable.h"
#include "Platform/Observation/Publisher.h"

namespace kestrona {

template <typename Output>
class CurrentValueSubject {
 public:
  using Receiver = std::function<void(const Output&)>;

  explicit CurrentValueSubject(Output value = Output{}) : state_(std::make_shared<State>(std::move(value))) {}
  CurrentValueSubject(const CurrentValueSubject&) = delete;
  CurrentValueSubject& operator=(const CurrentValueSubject&) = delete;

  Output value() const {
    std::lock_guard lock(state_->mutex);
    return state_->value;
  }

  void send(Output value) {
    std::vector<std::shared_ptr<Subscriber>> subscribers;
    {
      std::lock_guard lock(state_->mutex);
      state_->value = value;
      subscribers = state_->subscribers;
    }
    for (const auto& subscriber : subscribers) {
      if (subscriber->active) subscriber->receiver(value);
    }
  }

  [[nodiscard]] AnyCancellable sink(Receiver receiver) const { return subscribe(state_, std::move(receiver)); }

  AnyPublisher<Output> eraseToAnyPublisher() const {
    return AnyPublisher<Output>([state = state_](Receiver receiver) { return subscribe(state, std::move(receiver)); });
  }

 private:
  struct Subscriber {
    Receiver receiver;
    std::atomic<bool> active = true;
  };
  struct State {
    explicit State(Output initial) : value(std::move(initial)) {}
    std::mutex mutex;
    Output value;
    std::vector<std::shared_ptr<Subscriber>> subscribers;
  };

  static AnyCancellable subscribe(const std::shared_ptr<State>& state, Receiver receiver) {
    auto subscriber = std::make_shared<Subscriber>();
    subscriber->receiver = std::move(receiver);
    Output current = [&] {
      std::lock_guard lock(state->mutex);
      state->subscribers.push_back(subscriber);
      return state->value;
    }();
    std::weak_ptr<State> weak = state;
    AnyCancellable cancellable([weak, subscriber] {
      subscriber->active = false;
      if (auto strong = weak.lock()) {
        std::lock_guard lock(strong->mutex);
        std::erase(strong->subscribers, subscriber);
      }
    });
    subscriber->receiver(current);
    return cancellable;
  }

  std::shared_ptr<State> state_;
};

}  // namespace kestrona
