// Turns key-value observation of several key paths on one object into one
// stream of events without content.
//
// The observer starts observing each key path on the object when it is made
// (no old or new values wanted) and holds the object strongly. Any observed
// change, whatever its key path, sends one event to changes; the path and
// the change record are not passed on. The publisher is the changes subject
// with stop() attached to the cancellation of each subscription: as the
// subject holds a current value, a subscriber gets one event at once, on
// subscribing, and one per change afterwards. A subscription keeps its
// observer alive until it is cancelled.
//
// stop() removes the observer from the object for each remaining key path,
// then empties keyPaths(), so a second stop (or the one of destruction)
// removes nothing.
//
// Object is any type with observe(keyPath, options, callback) returning a
// KeyValueObservation: a managed object or a KeyValueObservable.
//
// Threading: make, subscribe and stop on the observed object's thread;
// events come on the thread that announces the change.
#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "Platform/Observation/CurrentValueSubject.h"
#include "Platform/Observation/KeyValueObservation.h"
#include "Platform/Observation/Publisher.h"

namespace kestrona {

class KeyPathChangeObserver : public std::enable_shared_from_this<KeyPathChangeObserver> {
 public:
  using Event = std::monostate;

  template <typename Object>
  KeyPathChangeObserver(std::shared_ptr<Object> object, std::vector<std::string> keyPaths)
      : object_(object), keyPaths_(std::move(keyPaths)) {
    for (const std::string& keyPath : keyPaths_) {
      observations_.push_back(object->observe(keyPath, 0, [this](const auto&) { changes_.send(Event{}); }));
    }
  }
  ~KeyPathChangeObserver() { stop(); }
  KeyPathChangeObserver(const KeyPathChangeObserver&) = delete;
  KeyPathChangeObserver& operator=(const KeyPathChangeObserver&) = delete;

  // Needs the observer to be held by a std::shared_ptr.
  AnyPublisher<Event> publisher();
  void stop() noexcept;
  const std::vector<std::string>& keyPaths() const noexcept { return keyPaths_; }

 private:
  CurrentValueSubject<Event> changes_;
  std::shared_ptr<void> object_;
  std::vector<std::string> keyPaths_;
  std::vector<KeyValueObservation> observations_;
};

}  // namespace kestrona
