#include "Platform/ObjectStore/ManagedObject.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <set>
#include <utility>

#include "Platform/ObjectStore/ManagedObjectContext.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

namespace {

struct ClassRegistry {
  std::mutex mutex;
  std::map<std::string, ManagedObject::Factory, std::less<>> factories;
};

ClassRegistry& classRegistry() {
  static ClassRegistry registry;
  return registry;
}

[[noreturn]] void invalid(const std::string& description, const EntityDescription& entity, std::string_view key) {
  throw StoreError(StoreErrorCode::managedObjectValidation, description,
                   {{StoreError::kEntityKey, entity.name()}, {StoreError::kKeyKey, std::string(key)}});
}

}  // namespace

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

ManagedObject::ManagedObject(Construction construction)
    : entity_(construction.entity_),
      context_(construction.context_),
      objectID_(std::move(construction.objectID_)) {}

ManagedObject::~ManagedObject() = default;

void ManagedObject::setClassForEntityName(std::string entityName, Factory factory) {
  auto& registry = classRegistry();
  std::lock_guard lock(registry.mutex);
  registry.factories[std::move(entityName)] = std::move(factory);
}

std::shared_ptr<ManagedObject> ManagedObjectContext::makeObject(const EntityDescription& entity,
                                                                const ManagedObjectID& id) {
  auto cached = factories_.find(&entity);
  if (cached == factories_.end()) {
    ManagedObject::Factory factory;
    auto& registry = classRegistry();
    std::lock_guard lock(registry.mutex);
    for (const EntityDescription* e = &entity; e && !factory; e = e->superentity()) {
      auto found = registry.factories.find(e->name());
      if (found != registry.factories.end()) factory = found->second;
    }
    cached = factories_.emplace(&entity, std::move(factory)).first;
  }
  const auto& factory = cached->second;
  ManagedObject::Construction construction(entity, this, id);
  if (factory) return factory(std::move(construction));
  return std::make_shared<ManagedObject>(std::move(construction));
}

std::shared_ptr<ManagedObject> ManagedObject::initWithEntity(const EntityDescription& entity,
                                                             ManagedObjectContext& context) {
  return context.insertNewObject(entity);
}

std::shared_ptr<ManagedObject> ManagedObject::insertNewObjectForEntityForName(std::string_view entityName,
                                                                              ManagedObjectContext& context) {
  return context.insertNewObject(entityName);
}

bool ManagedObject::isUpdated() const {
  if (inserted_ || deleted_ || state_ != FaultingState::loaded) return false;
  return values_ != committed_;
}

bool ManagedObject::hasChanges() const { return inserted_ || deleted_ || isUpdated(); }

void ManagedObject::requireUsable() const {
  if (!context_ || state_ == FaultingState::unusable) {
    throw StoreError(StoreErrorCode::managedObjectReferentialIntegrity,
                     "The object " + objectID_.description() + " is no longer in a context",
                     {{StoreError::kObjectURIKey, objectID_.URIRepresentation()}});
  }
}

void ManagedObject::fireFault() {
  if (state_ != FaultingState::fault) return;
  if (values_.size() == entity_->slotCount() && committed_.size() == values_.size()) {
    state_ = FaultingState::loaded;
    return;
  }
  requireUsable();
  auto row = context_->loadValues(objectID_);
  if (!row) {
    throw StoreError(StoreErrorCode::managedObjectReferentialIntegrity,
                     "The object " + objectID_.description() + " is gone from the store",
                     {{StoreError::kObjectURIKey, objectID_.URIRepresentation()}});
  }
  committed_ = row->values;
  values_ = std::move(row->values);
  version_ = row->version;
  state_ = FaultingState::loaded;
}

const Value& ManagedObject::slotValue(std::size_t slot) {
  fireFault();
  static const Value nil;
  return slot < values_.size() ? values_[slot] : nil;
}

void ManagedObject::setSlot(std::size_t slot, Value value) {
  fireFault();
  values_[slot] = std::move(value);
  if (context_) context_->noteChanged(*this);
}

Value ManagedObject::valueForKey(std::string_view key) {
  if (auto attribute = entity_->attribute(key)) return slotValue(attribute->slot());
  if (auto relationship = entity_->relationship(key)) {
    if (relationship->isToMany()) {
      Value::Array objects;
      for (auto& object : toMany(*relationship)) objects.emplace_back(std::move(object));
      return Value(std::move(objects));
    }
    const Value& id = slotValue(relationship->slot());
    if (id.isNil() || !context_) return id;
    return Value(context_->objectWithID(*id.get<ManagedObjectID>()));
  }
  return valueForUndefinedKey(key);
}

Value ManagedObject::valueForUndefinedKey(std::string_view key) {
  invalid("The entity " + entity_->name() + " has no property \"" + std::string(key) + "\"", *entity_, key);
}

Value ManagedObject::valueForKeyPath(std::string_view keyPath) {
  std::shared_ptr<ManagedObject> object = shared_from_this();
  while (true) {
    auto dot = keyPath.find('.');
    if (dot == std::string_view::npos) return object->valueForKey(keyPath);
    Value next = object->valueForKey(keyPath.substr(0, dot));
    auto destination = next.get<Value::Object>();
    if (!destination) return Value();
    object = *destination;
    keyPath.remove_prefix(dot + 1);
  }
}

Value ManagedObject::coerced(const AttributeDescription& attribute, const Value& value) const {
  if (value.isNil()) return value;
  auto mismatch = [&]() -> Value {
    invalid("The value " + value.description() + " does not fit " + entity_->name() + "." + attribute.name(),
            *entity_, attribute.name());
  };
  auto number = value.number();
  switch (attribute.attributeType()) {
    case AttributeType::booleanAttributeType:
      return number ? Value(*number != 0) : mismatch();
    case AttributeType::integer16AttributeType:
    case AttributeType::integer32AttributeType:
    case AttributeType::integer64AttributeType: {
      if (!number) return mismatch();
      std::int64_t integer = value.get<std::int64_t>() ? *value.get<std::int64_t>() : static_cast<std::int64_t>(*number);
      std::int64_t limit = attribute.attributeType() == AttributeType::integer16AttributeType
                               ? std::numeric_limits<std::int16_t>::max()
                           : attribute.attributeType() == AttributeType::integer32AttributeType
                               ? std::numeric_limits<std::int32_t>::max()
                               : std::numeric_limits<std::int64_t>::max();
      if (integer > limit || integer < -limit - 1) return mismatch();
      return Value(integer);
    }
    case AttributeType::doubleAttributeType:
      return number ? Value(*number) : mismatch();
    case AttributeType::dateAttributeType:
      return value.get<Date>() ? value : mismatch();
    case AttributeType::stringAttributeType:
      return value.get<std::string>() ? value : mismatch();
    case AttributeType::binaryDataAttributeType:
      return value.get<Data>() ? value : mismatch();
    default:
      return value;
  }
}

void ManagedObject::setValue(const Value& value, std::string_view key) {
  requireUsable();
  if (deleted_) invalid("The object " + objectID_.description() + " is deleted", *entity_, key);
  if (auto attribute = entity_->attribute(key)) {
    Value converted = coerced(*attribute, value);
    willChangeValueForKey(key);
    setSlot(attribute->slot(), std::move(converted));
    didChangeValueForKey(key);
    return;
  }
  auto relationship = entity_->relationship(key);
  if (!relationship) {
    invalid("The entity " + entity_->name() + " has no property \"" + std::string(key) + "\"", *entity_, key);
  }
  auto resolve = [&](const Value& item) -> std::shared_ptr<ManagedObject> {
    if (item.isNil()) return nullptr;
    std::shared_ptr<ManagedObject> object;
    if (auto held = item.get<Value::Object>()) {
      object = *held;
    } else if (auto id = item.get<ManagedObjectID>()) {
      object = context_->objectWithID(*id);
    }
    if (!object || !object->entity().isKindOfEntity(relationship->destinationEntity())) {
      invalid("The value " + item.description() + " does not fit " + entity_->name() + "." + relationship->name(),
              *entity_, key);
    }
    if (object->context_ != context_) {
      invalid("A relationship cannot join objects of two contexts", *entity_, key);
    }
    return object;
  };
  if (!relationship->isToMany()) {
    setToOne(*relationship, resolve(value));
    return;
  }
  std::vector<std::shared_ptr<ManagedObject>> wanted;
  if (auto array = value.get<Value::Array>()) {
    for (const auto& item : *array) wanted.push_back(resolve(item));
  } else if (!value.isNil()) {
    invalid("A to-many relationship takes an array", *entity_, key);
  }
  const auto& inverse = relationship->inverseRelationship();
  auto self = shared_from_this();
  willChangeValueForKey(key);
  for (auto& current : toMany(*relationship)) {
    if (std::find(wanted.begin(), wanted.end(), current) == wanted.end()) current->setToOne(inverse, nullptr);
  }
  for (auto& object : wanted) object->setToOne(inverse, self);
  didChangeValueForKey(key);
}

void ManagedObject::setToOne(const RelationshipDescription& relationship,
                             const std::shared_ptr<ManagedObject>& destination) {
  const Value& current = slotValue(relationship.slot());
  std::optional<ManagedObjectID> oldID = current.objectID();
  if (destination ? (oldID && *oldID == destination->objectID()) : !oldID) return;
  const auto& inverse = relationship.inverseRelationship();
  // The old destination matters to a stored inverse, and otherwise only to
  // its observers, which only a registered object can have.
  std::shared_ptr<ManagedObject> old;
  if (oldID) old = inverse.isToMany() ? context_->objectRegisteredForID(*oldID) : context_->objectWithID(*oldID);
  std::shared_ptr<ManagedObject> other;
  if (!inverse.isToMany() && destination) {
    if (auto theirs = destination->slotValue(inverse.slot()).objectID(); theirs && !(*theirs == objectID_)) {
      other = context_->objectWithID(*theirs);
    }
  }
  // Every object whose side changes announces it, before and after.
  std::vector<std::pair<ManagedObject*, const std::string*>> announced{{this, &relationship.name()}};
  if (old) announced.emplace_back(old.get(), &inverse.name());
  if (destination) announced.emplace_back(destination.get(), &inverse.name());
  if (other) announced.emplace_back(other.get(), &relationship.name());
  for (const auto& [object, key] : announced) object->willChangeValueForKey(*key);
  if (!inverse.isToMany()) {
    // Both sides are stored: unhook the old partners of both ends.
    if (old && old->slotValue(inverse.slot()) == Value(objectID_)) old->setSlot(inverse.slot(), Value());
    if (destination) {
      if (other) other->setSlot(relationship.slot(), Value());
      destination->setSlot(inverse.slot(), Value(objectID_));
    }
  }
  setSlot(relationship.slot(), destination ? Value(destination->objectID()) : Value());
  for (auto entry = announced.rbegin(); entry != announced.rend(); ++entry) entry->first->didChangeValueForKey(*entry->second);
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObject::toMany(const RelationshipDescription& relationship) {
  std::vector<std::shared_ptr<ManagedObject>> result;
  if (!context_) return result;
  std::set<ManagedObjectID> members;
  if (!objectID_.isTemporaryID()) {
    for (auto& id : context_->storedRelatedObjectIDs(objectID_, relationship)) members.insert(std::move(id));
  }
  // Pending changes on the inverse side decide over the stored rows.
  const auto& inverse = relationship.inverseRelationship();
  const Value self(objectID_);
  for (const auto& object : context_->changedObjects()) {
    if (!object->entity().isKindOfEntity(relationship.destinationEntity())) continue;
    if (object->deleted_) {
      members.erase(object->objectID_);
      continue;
    }
    if (object->state_ != FaultingState::loaded) continue;
    bool now = object->values_[inverse.slot()] == self;
    bool before = object->committed_[inverse.slot()] == self;
    if (now) {
      members.insert(object->objectID_);
    } else if (before) {
      members.erase(object->objectID_);
    }
  }
  for (const auto& id : members) {
    auto object = context_->objectWithID(id);
    if (!object->deleted_) result.push_back(std::move(object));
  }
  return result;
}

std::optional<std::string> ManagedObject::stringForKey(std::string_view key) {
  Value value = valueForKey(key);
  auto text = value.get<std::string>();
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

bool ManagedObject::boolForKey(std::string_view key) { return valueForKey(key).number().value_or(0) != 0; }

std::int64_t ManagedObject::integerForKey(std::string_view key) {
  Value value = valueForKey(key);
  if (auto integer = value.get<std::int64_t>()) return *integer;
  return static_cast<std::int64_t>(value.number().value_or(0));
}

double ManagedObject::doubleForKey(std::string_view key) { return valueForKey(key).number().value_or(0); }

std::optional<Date> ManagedObject::dateForKey(std::string_view key) {
  Value value = valueForKey(key);
  auto date = value.get<Date>();
  return date ? std::optional<Date>(*date) : std::nullopt;
}

std::shared_ptr<ManagedObject> ManagedObject::objectForKey(std::string_view key) {
  Value value = valueForKey(key);
  auto object = value.get<Value::Object>();
  return object ? *object : nullptr;
}

std::vector<std::shared_ptr<ManagedObject>> ManagedObject::objectsForKey(std::string_view key) {
  std::vector<std::shared_ptr<ManagedObject>> result;
  Value value = valueForKey(key);
  if (auto array = value.get<Value::Array>()) {
    for (const auto& item : *array) {
      if (auto object = item.get<Value::Object>()) result.push_back(*object);
    }
  }
  return result;
}

std::map<std::string, Value> ManagedObject::changedValues() const {
  std::map<std::string, Value> changes;
  if (state_ != FaultingState::loaded && !(state_ == FaultingState::unusable && !values_.empty())) return changes;
  for (const auto& [name, attribute] : entity_->attributesByName()) {
    auto slot = attribute->slot();
    if (!(values_[slot] == committed_[slot]) || values_[slot].isNil() != committed_[slot].isNil()) {
      changes[name] = values_[slot];
    }
  }
  for (const auto& [name, relationship] : entity_->relationshipsByName()) {
    if (relationship->isToMany()) continue;
    auto slot = relationship->slot();
    if (!(values_[slot] == committed_[slot])) changes[name] = values_[slot];
  }
  return changes;
}

std::map<std::string, Value> ManagedObject::committedValuesForKeys(const std::vector<std::string>& keys) const {
  if (state_ == FaultingState::fault) const_cast<ManagedObject*>(this)->fireFault();
  std::map<std::string, Value> result;
  auto committed = [&](std::size_t slot) { return slot < committed_.size() ? committed_[slot] : Value(); };
  auto add = [&](const std::string& key) {
    if (auto attribute = entity_->attribute(key)) {
      result[key] = committed(attribute->slot());
    } else if (auto relationship = entity_->relationship(key); relationship && !relationship->isToMany()) {
      result[key] = committed(relationship->slot());
    }
  };
  if (keys.empty()) {
    for (const auto& [name, attribute] : entity_->attributesByName()) add(name);
    for (const auto& [name, relationship] : entity_->relationshipsByName()) add(name);
  } else {
    for (const auto& key : keys) add(key);
  }
  return result;
}

std::map<std::string, Value> ManagedObject::snapshotOf(const std::vector<Value>& slots) const {
  std::map<std::string, Value> result;
  auto at = [&slots](std::size_t slot) { return slot < slots.size() ? slots[slot] : Value(); };
  for (const auto& [name, attribute] : entity_->attributesByName()) result[name] = at(attribute->slot());
  for (const auto& [name, relationship] : entity_->relationshipsByName()) {
    if (!relationship->isToMany()) result[name] = at(relationship->slot());
  }
  return result;
}

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

void ManagedObject::validateValue(Value& value, std::string_view key) const {
  bool optional = true;
  if (auto attribute = entity_->attribute(key)) {
    optional = attribute->isOptional();
  } else if (auto relationship = entity_->relationship(key); relationship && !relationship->isToMany()) {
    optional = relationship->isOptional();
  }
  if (!optional && value.isNil()) {
    throw StoreError(StoreErrorCode::validationMissingMandatoryProperty,
                     entity_->name() + "." + std::string(key) + " is required",
                     {{StoreError::kEntityKey, entity_->name()},
                      {StoreError::kKeyKey, std::string(key)},
                      {StoreError::kValidationObjectKey,
                       ErrorUserInfoObject(std::const_pointer_cast<ManagedObject>(shared_from_this()))}});
  }
}

}  // namespace kestrona
