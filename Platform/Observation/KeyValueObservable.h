// Key-value observation of plain objects: a base class that gives any object
// of ours (the timer, for one) the observation that managed objects have.
//
// A subclass names its keys: valueForKey() answers the value of each, over
// the value type it chose (the store's Value for the timer, so a key can hold
// a managed object). It announces each change of a key around the change
// with willChangeValueForKey / didChangeValueForKey; announcements nest, and
// observers hear once, when the outermost did comes. A computed key names the
// keys it depends on in keyPathsForValuesAffectingValueForKey(); only the
// first component of each of those key paths counts, as for managed objects.
//
// observe(keyPath, options, callback) calls callback with a change record
// each time the value at keyPath is announced to change: with the value
// before the outermost will (oldValue option), the value after the did
// (newValue), once at once (initial) and before each change (prior). A key
// path may go on past a key that holds an object ("currentSession.task.name"):
// the subclass reads the rest of the path on that value
// (valueForKeyPathOfValue) and observes it there (observeKeyPathOfValue,
// which must report the nested object's changes before and after each, as
// a prior observer does). Changes along the rest reach the observer as
// changes of the whole path on this object; when the first key changes, the
// rest is observed anew on its new value.
//
// The returned KeyValueObservation removes the observer when it is
// destroyed or invalidated; it is safe after this object is gone. Removing an
// observer during a delivery keeps it from being called afterwards.
//
// Threading: observers are called synchronously on the thread that announces
// the change. Observe and announce on the one thread that owns the object
// (the main loop for the timer); tokens may be dropped on any thread.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Observation/KeyValueObservation.h"
#include "Platform/Observation/KeyValueObserving.h"

namespace kestrona {

template <typename ValueType>
class KeyValueObservable {
 public:
  using Change = BasicKeyValueChange<ValueType, KeyValueObservable>;
  using ObservationCallback = std::function<void(const Change&)>;
  // Called by a nested observation before (true) and after (false) each
  // change along the rest of a key path.
  using NestedChangeCallback = std::function<void(bool isPrior)>;

  KeyValueObservable() : registry_(std::make_shared<Registry>()) {}
  virtual ~KeyValueObservable() {
    for (const auto& observation : registry_->takeAll()) observation->child.invalidate();
  }
  KeyValueObservable(const KeyValueObservable&) = delete;
  KeyValueObservable& operator=(const KeyValueObservable&) = delete;

  [[nodiscard]] KeyValueObservation observe(std::string keyPath, KeyValueObservingOptions options,
                                            ObservationCallback callback) {
    auto observation = std::make_shared<Observation>();
    auto dot = keyPath.find('.');
    observation->firstKey = keyPath.substr(0, dot);
    if (dot != std::string::npos) observation->rest = keyPath.substr(dot + 1);
    observation->keyPath = std::move(keyPath);
    observation->options = options;
    observation->callback = std::move(callback);
    registry_->add(observation);
    attachChild(observation);
    KeyValueObservation token(registry_, observation->id, &Registry::removeFrom);
    if (options & KeyValueObservingOption::initial) {
      Change change;
      change.keyPath = observation->keyPath;
      change.object = this;
      if (options & KeyValueObservingOption::newValue) change.newValue = valueForKeyPath(observation->keyPath);
      observation->callback(change);
    }
    return token;
  }

  void willChangeValueForKey(std::string_view key) {
    for (const auto& observation : registry_->snapshot()) {
      if (observation->active && triggers(observation->firstKey, key)) willChange(*observation);
    }
  }

  void didChangeValueForKey(std::string_view key) {
    for (const auto& observation : registry_->snapshot()) {
      if (!observation->active || !triggers(observation->firstKey, key)) continue;
      if (!observation->rest.empty() && observation->firstKey == key && observation->depth == 1) {
        attachChild(observation);
      }
      didChange(observation);
    }
  }

  // The value at a key path: the first key here, the rest on its value.
  ValueType valueForKeyPath(std::string_view keyPath) const {
    auto dot = keyPath.find('.');
    ValueType first = valueForKey(keyPath.substr(0, dot));
    if (dot == std::string_view::npos) return first;
    return valueForKeyPathOfValue(first, keyPath.substr(dot + 1));
  }

  virtual ValueType valueForKey(std::string_view key) const = 0;
  // The key paths whose changes change key; none by default.
  virtual std::vector<std::string> keyPathsForValuesAffectingValueForKey(std::string_view) const { return {}; }

 protected:
  // The value at keyPath on an object that value holds; the default knows
  // of no nested objects and answers an empty value.
  virtual ValueType valueForKeyPathOfValue(const ValueType&, std::string_view) const { return ValueType{}; }
  // Observes keyPath on the object that value holds, calling changed before
  // and after each change there; an empty token when value holds nothing
  // observable (the default).
  virtual KeyValueObservation observeKeyPathOfValue(const ValueType&, std::string, NestedChangeCallback) {
    return {};
  }

 private:
  struct Observation {
    std::uint64_t id = 0;
    std::string keyPath;
    std::string firstKey;
    std::string rest;
    KeyValueObservingOptions options = 0;
    ObservationCallback callback;
    // Cleared under the registry's lock, read during deliveries.
    std::atomic<bool> active = true;
    // Open will-change announcements that touch this observer, and the value
    // before the outermost of them.
    int depth = 0;
    ValueType oldValue{};
    KeyValueObservation child;
  };

  // The observer list, owned apart from the object so that tokens can tell
  // whether it is still there. The lock keeps the list whole when a token is
  // dropped on another thread; callbacks run without it.
  struct Registry {
    std::mutex mutex;
    std::vector<std::shared_ptr<Observation>> observations;
    std::uint64_t nextID = 1;

    void add(const std::shared_ptr<Observation>& observation) {
      std::lock_guard lock(mutex);
      observation->id = nextID++;
      observations.push_back(observation);
    }
    std::vector<std::shared_ptr<Observation>> snapshot() {
      std::lock_guard lock(mutex);
      return observations;
    }
    std::vector<std::shared_ptr<Observation>> takeAll() {
      std::lock_guard lock(mutex);
      for (const auto& observation : observations) observation->active = false;
      return std::exchange(observations, {});
    }
    static void removeFrom(void* owner, std::uint64_t id) noexcept {
      auto& registry = *static_cast<Registry*>(owner);
      std::shared_ptr<Observation> removed;
      {
        std::lock_guard lock(registry.mutex);
        auto& list = registry.observations;
        auto found = std::find_if(list.begin(), list.end(), [id](const auto& entry) { return entry->id == id; });
        if (found == list.end()) return;
        removed = *found;
        removed->active = false;
        list.erase(found);
      }
      // Outside the lock: the nested object's removal takes its own lock.
      removed->child.invalidate();
    }
  };

  bool triggers(std::string_view observedKey, std::string_view changedKey, int depth = 0) const {
    if (observedKey == changedKey) return true;
    // Dependencies are declared by hand; a cycle among them must not recurse forever.
    if (depth > 8) return false;
    for (const auto& path : keyPathsForValuesAffectingValueForKey(observedKey)) {
      if (triggers(std::string_view(path).substr(0, path.find('.')), changedKey, depth + 1)) return true;
    }
    return false;
  }

  void willChange(Observation& observation) {
    if (observation.depth++ > 0) return;
    observation.oldValue = valueForKeyPath(observation.keyPath);
    if (observation.options & KeyValueObservingOption::prior) notify(observation, true);
  }

  void didChange(const std::shared_ptr<Observation>& observation) {
    // A did without its will (a nested object that announced only after)
    // still tells of a change, with the value before it unknown.
    bool knewOldValue = observation->depth > 0;
    if (knewOldValue && --observation->depth > 0) return;
    notify(*observation, false, knewOldValue);
  }

  void notify(Observation& observation, bool prior, bool withOldValue = true) {
    Change change;
    change.keyPath = observation.keyPath;
    change.object = this;
    change.isPrior = prior;
    if (withOldValue && (observation.options & KeyValueObservingOption::oldValue)) {
      change.oldValue = observation.oldValue;
    }
    if (!prior && (observation.options & KeyValueObservingOption::newValue)) {
      change.newValue = valueForKeyPath(observation.keyPath);
    }
    observation.callback(change);
  }

  void attachChild(const std::shared_ptr<Observation>& observation) {
    observation->child.invalidate();
    if (observation->rest.empty() || !observation->active) return;
    std::weak_ptr<Observation> weak = observation;
    observation->child =
        observeKeyPathOfValue(valueForKey(observation->firstKey), observation->rest, [this, weak](bool isPrior) {
          // An active observation means this object, which deactivates all
          // of its observations when it goes, is still here.
          auto outer = weak.lock();
          if (!outer || !outer->active) return;
          if (isPrior) {
            willChange(*outer);
          } else {
            didChange(outer);
          }
        });
  }

  std::shared_ptr<Registry> registry_;
};

}  // namespace kestrona
