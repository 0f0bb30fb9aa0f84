// The observation of managed objects: observers, their key paths through
// to-one relationships, dependent keys, and the announcements of changes.
#include <algorithm>
#include <mutex>
#include <utility>

#include "Platform/ObjectStore/ManagedObject.h"
#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

// One observer of a key path. firstKey is the key on this object; rest, when
// not empty, is observed on the destination of firstKey through child.
struct ManagedObject::Observation {
  std::uint64_t id = 0;
  std::string keyPath;
  std::string firstKey;
  std::string rest;
  KeyValueObservingOptions options = 0;
  ObservationCallback callback;
  bool active = true;
  // Open will-change announcements that touch this observer, and the value
  // before the outermost of them.
  int depth = 0;
  Value oldValue;
  KeyValueObservation child;
};

// The observers of one object; made on the first observe(). The lock keeps
// the list whole when a KeyValueObservation is dropped on another thread;
// callbacks run without it.
struct ManagedObject::ObservationInfo {
  std::mutex mutex;
  std::vector<std::shared_ptr<Observation>> observations;
  std::uint64_t nextID = 1;

  std::vector<std::shared_ptr<Observation>> snapshot() {
    std::lock_guard lock(mutex);
    return observations;
  }
};

// Made and destroyed here, where the observation state is a complete type.
ManagedObject::ManagedObject(Construction construction)
    : entity_(construction.entity_),
      context_(construction.context_),
      objectID_(std::move(construction.objectID_)) {}

ManagedObject::~ManagedObject() = default;

void ManagedObject::assignValues(std::vector<Value> values) {
  if (!observation_ || values_.size() != values.size()) {
    values_ = std::move(values);
    return;
  }
  std::vector<std::string> changed;
  for (const auto& [name, attribute] : entity_->attributesByName()) {
    if (!(values_[attribute->slot()] == values[attribute->slot()])) changed.push_back(name);
  }
  for (const auto& [name, relationship] : entity_->relationshipsByName()) {
    if (!relationship->isToMany() && !(values_[relationship->slot()] == values[relationship->slot()])) {
      changed.push_back(name);
    }
  }
  for (const auto& key : changed) willChangeValueForKey(key);
  values_ = std::move(values);
  for (auto key = changed.rbegin(); key != changed.rend(); ++key) didChangeValueForKey(*key);
}

std::vector<std::string> ManagedObject::keyPathsForValuesAffectingValueForKey(std::string_view) const { return {}; }

bool ManagedObject::triggers(std::string_view observedKey, std::string_view changedKey, int depth) const {
  if (observedKey == changedKey) return true;
  // Dependencies are declared by hand; a cycle among them must not recurse forever.
  if (depth > 8) return false;
  for (const auto& path : keyPathsForValuesAffectingValueForKey(observedKey)) {
    std::string_view first = std::string_view(path).substr(0, path.find('.'));
    if (triggers(first, changedKey, depth + 1)) return true;
  }
  return false;
}

KeyValueObservation ManagedObject::observe(std::string keyPath, KeyValueObservingOptions options,
                                           ObservationCallback callback) {
  // A change is told with the value before it, so an observed object holds
  // its values: a fault loads now, or a merge would refresh it unheard. A
  // row already gone leaves it a fault, which fails at its first access.
  if (state_ == FaultingState::fault && context_ != nullptr) {
    try {
      fireFault();
    } catch (const StoreError&) {
    }
  }
  if (!observation_) observation_ = std::make_unique<ObservationInfo>();
  auto observation = std::make_shared<Observation>();
  auto dot = keyPath.find('.');
  observation->firstKey = keyPath.substr(0, dot);
  if (dot != std::string::npos) observation->rest = keyPath.substr(dot + 1);
  observation->keyPath = std::move(keyPath);
  observation->options = options;
  observation->callback = std::move(callback);
  {
    std::lock_guard lock(observation_->mutex);
    observation->id = observation_->nextID++;
    observation_->observations.push_back(observation);
  }
  attachChild(observation);
  KeyValueObservation token(weak_from_this(), observation->id, &ManagedObject::removeObservationOf);
  if (options & KeyValueObservingOption::initial) {
    KeyValueChange change;
    change.keyPath = observation->keyPath;
    change.object = this;
    if (options & KeyValueObservingOption::newValue) change.newValue = valueForKeyPathOrNil(observation->keyPath);
    observation->callback(change);
  }
  return token;
}

void ManagedObject::removeObservationOf(void* object, std::uint64_t id) noexcept {
  static_cast<ManagedObject*>(object)->removeObservation(id);
}

void ManagedObject::removeObservation(std::uint64_t id) noexcept {
  if (!observation_) return;
  std::shared_ptr<Observation> removed;
  {
    std::lock_guard lock(observation_->mutex);
    auto& list = observation_->observations;
    auto found = std::find_if(list.begin(), list.end(), [id](const auto& entry) { return entry->id == id; });
    if (found == list.end()) return;
    removed = *found;
    removed->active = false;
    list.erase(found);
  }
  // Dropped outside the lock: the child's removal takes its own object's lock.
  removed->child.invalidate();
}

void ManagedObject::attachChild(const std::shared_ptr<Observation>& observation) {
  observation->child.invalidate();
  if (observation->rest.empty() || !observation->active) return;
  std::shared_ptr<ManagedObject> destination;
  try {
    if (entity_->relationship(observation->firstKey)) destination = objectForKey(observation->firstKey);
  } catch (const StoreError&) {
    // A destination that cannot be read has nothing to observe.
  }
  if (!destination) return;
  // The destination's changes along the rest of the path reach this
  // observer as changes of the whole path on this object.
  std::weak_ptr<Observation> weak = observation;
  ManagedObject* self = this;
  auto forward = [weak, self](const KeyValueChange& inner) {
    auto outer = weak.lock();
    if (!outer || !outer->active) return;
    KeyValueChange change = inner;
    change.keyPath = outer->keyPath;
    change.object = self;
    outer->callback(change);
  };
  auto options = observation->options & ~KeyValueObservingOption::initial;
  observation->child = destination->observe(observation->rest, options, std::move(forward));
}

void ManagedObject::willChangeValueForKey(std::string_view key) {
  if (!observation_) return;
  for (const auto& observation : observation_->snapshot()) {
    if (!observation->active || !triggers(observation->firstKey, key)) continue;
    if (observation->depth++ > 0) continue;
    observation->oldValue = valueForKeyPathOrNil(observation->keyPath);
    if (observation->options & KeyValueObservingOption::prior) notifyObservation(observation, true);
  }
}

void ManagedObject::didChangeValueForKey(std::string_view key) {
  if (!observation_) return;
  for (const auto& observation : observation_->snapshot()) {
    if (!observation->active || observation->depth == 0 || !triggers(observation->firstKey, key)) continue;
    if (--observation->depth > 0) continue;
    if (!observation->rest.empty() && observation->firstKey == key) attachChild(observation);
    notifyObservation(observation, false);
  }
}

void ManagedObject::notifyObservation(const std::shared_ptr<Observation>& observation, bool prior) {
  KeyValueChange change;
  change.keyPath = observation->keyPath;
  change.object = this;
  change.isPrior = prior;
  if (observation->options & KeyValueObservingOption::oldValue) change.oldValue = observation->oldValue;
  if (!prior && (observation->options & KeyValueObservingOption::newValue)) {
    change.newValue = valueForKeyPathOrNil(observation->keyPath);
  }
  observation->callback(change);
}

Value ManagedObject::valueForKeyPathOrNil(std::string_view keyPath) {
  if (!context_ || state_ == FaultingState::unusable) return Value();
  try {
    return valueForKeyPath(keyPath);
  } catch (const StoreError&) {
    return Value();
  }
}

}  // namespace kestrona
