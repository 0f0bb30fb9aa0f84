// A stream of values that never fails, seen from its subscribers.
//
// An AnyPublisher is a value holding how to subscribe: sink(receiveValue)
// subscribes, and the returned AnyCancellable ends that subscription. Each
// subscription is its own: a publisher may do work per subscriber when it is
// subscribed (make an observer, say). handleEvents(receiveCancel) gives a
// publisher whose subscriptions also run receiveCancel when they are
// cancelled, after the upstream subscription has ended.
//
// Threading: values arrive on the thread that the source sends them on.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "Platform/Observation/Cancellable.h"

namespace kestrona {

template <typename Output>
class AnyPublisher {
 public:
  using Receiver = std::function<void(const Output&)>;
  using Subscribe = std::function<AnyCancellable(Receiver)>;

  explicit AnyPublisher(Subscribe subscribe) : subscribe_(std::move(subscribe)) {}

  [[nodiscard]] AnyCancellable sink(Receiver receiveValue) const { return subscribe_(std::move(receiveValue)); }

  AnyPublisher handleEvents(std::function<void()> receiveCancel) const {
    return AnyPublisher([subscribe = subscribe_, receiveCancel = std::move(receiveCancel)](Receiver receiver) {
      auto upstream = std::make_shared<AnyCancellable>(subscribe(std::move(receiver)));
      return AnyCancellable([upstream, receiveCancel] {
        upstream->cancel();
        receiveCancel();
      });
    });
  }

 private:
  Subscribe subscribe_;
};

}  // namespace kestrona
