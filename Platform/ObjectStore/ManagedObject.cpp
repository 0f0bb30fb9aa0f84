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
  return committed_ && values_ != *committed_;
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
  if (values_.size() == entity_->slotCount()) {
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
  takeRow(std::move(row->values));
  version_ = row->version;
  state_ = FaultingState::loaded;
}

void ManagedObject::keepCommitted() {
  if (!committed_) committed_ = std::make_unique<std::vector<Value>>(values_);
}

void ManagedObject::takeRow(std::vector<Value> row) {
  values_ = std::move(row);
  committed_.reset();
}

void ManagedObject::setCommitted(std::vector<Value> row) {
  if (row == values_) {
    committed_.reset();
  } else {
    committed_ = std::make_unique<std::vector<Value>>(std::move(row));
  }
}

void ManagedObject::clearValues() noexcept {
  values_.clear();
  committed_.reset();
}

void ManagedObject::commitNothing() { committed_ = std::make_unique<std::vector<Value>>(values_.size()); }

const Value& ManagedObject::slotValue(std::size_t slot) {
  fireFault();
  static const Value nil;
  return slot < values_.size() ? values_[slot] : nil;
}

void ManagedObject::setSlot(std::size_t slot, Value value) {
  fireFault();
  keepCommitted();
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
    bool before = object->committedValues()[inverse.slot()] == self;
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
  const auto& committed = committedValues();
  if (state_ != FaultingState::loaded && !(state_ == FaultingState::unusable && !values_.empty())) return changes;
  for (const auto& [name, attribute] : entity_->attributesByName()) {
    auto slot = attribute->slot();
    if (!(values_[slot] == committed[slot]) || values_[slot].isNil() != committed[slot].isNil()) {
      changes[name] = values_[slot];
    }
  }
  for (const auto& [name, relationship] : entity_->relationshipsByName()) {
    if (relationship->isToMany()) continue;
    auto slot = relationship->slot();
    if (!(values_[slot] == committed[slot])) changes[name] = values_[slot];
  }
  return changes;
}

std::map<std::string, Value> ManagedObject::committedValuesForKeys(const std::vector<std::string>& keys) const {
  if (state_ == FaultingState::fault) const_cast<ManagedObject*>(this)->fireFault();
  std::map<std::string, Value> result;
  const auto& stored = committedValues();
  auto committed = [&](std::size_t slot) { return slot < stored.size() ? stored[slot] : Value(); };
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
