#include "SharedCore/DataProviders/DetachedError.h"

#include <any>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Foundation/UUID.h"
#include "Platform/ObjectStore/ContextNotifications.h"
#include "Platform/ObjectStore/ManagedObject.h"
#include "Platform/ObjectStore/MergeConflict.h"
#include "Platform/ObjectStore/StoreError.h"
#include "Platform/ObjectStore/Value.h"
#include "Platform/Time/Date.h"
#include "Platform/URL/URL.h"

namespace kestrona {

namespace {

using ManagedObjectPointer = std::shared_ptr<ManagedObject>;

bool holds(const ErrorUserInfoValue& value);
bool holds(const std::any& value);
std::optional<ErrorUserInfoValue> sanitized(const ErrorUserInfoValue& value);
std::optional<ErrorUserInfoValue> sanitized(const std::any& value);

template <typename Range>
bool anyHolds(const Range& range) {
  for (const auto& member : range) {
    if (holds(member)) return true;
  }
  return false;
}

bool holds(const Value& value) {
  if (const auto* object = value.get<Value::Object>()) return *object != nullptr;
  if (const auto* array = value.get<Value::Array>()) {
    for (const Value& member : *array) {
      if (holds(member)) return true;
    }
  }
  return false;
}

bool holds(const ManagedObjectPointer& object) { return object != nullptr; }

bool holds(const std::any& value) {
  if (const auto* object = std::any_cast<ManagedObjectPointer>(&value)) return holds(*object);
  if (std::any_cast<MergeConflict>(&value) != nullptr || std::any_cast<ConstraintConflict>(&value) != nullptr) {
    return true;
  }
  if (const auto* conflicts = std::any_cast<std::vector<MergeConflict>>(&value)) return !conflicts->empty();
  if (const auto* conflicts = std::any_cast<std::vector<ConstraintConflict>>(&value)) return !conflicts->empty();
  if (const auto* objects = std::any_cast<std::vector<ManagedObjectPointer>>(&value)) return anyHolds(*objects);
  if (const auto* objects = std::any_cast<ManagedObjectSet>(&value)) return anyHolds(*objects);
  if (const auto* error = std::any_cast<std::shared_ptr<const Error>>(&value)) {
    return *error && holdsManagedObjects(**error);
  }
  if (const auto* error = std::any_cast<std::shared_ptr<Error>>(&value)) return *error && holdsManagedObjects(**error);
  if (const auto* error = std::any_cast<Error>(&value)) return holdsManagedObjects(*error);
  if (const auto* array = std::any_cast<ErrorUserInfoArray>(&value)) return anyHolds(*array);
  if (const auto* array = std::any_cast<std::vector<std::any>>(&value)) return anyHolds(*array);
  if (const auto* dictionary = std::any_cast<ErrorUserInfo>(&value)) {
    for (const auto& entry : *dictionary) {
      if (holds(entry.second)) return true;
    }
    return false;
  }
  if (const auto* stored = std::any_cast<Value>(&value)) return holds(*stored);
  return false;
}

bool holds(const ErrorUserInfoValue& value) {
  const auto* object = std::get_if<ErrorUserInfoObject>(&value);
  return object != nullptr && holds(object->value);
}

std::string uri(const ManagedObjectID& id) { return id.URIRepresentation(); }

ErrorUserInfoValue wrapped(std::any value) { return ErrorUserInfoObject(std::move(value)); }

std::optional<ErrorUserInfoValue> detachedNested(const Error& error) {
  return wrapped(std::shared_ptr<const Error>(std::make_shared<const Error>(detachedFromManagedObjects(error))));
}

// An array of the sanitised members that have something left.
template <typename Range>
ErrorUserInfoValue sanitizedArray(const Range& range) {
  ErrorUserInfoArray result;
  for (const auto& member : range) {
    if (auto kept = sanitized(std::any(member))) result.push_back(std::move(*kept));
  }
  return wrapped(std::move(result));
}

std::optional<ErrorUserInfoValue> sanitized(const Value& value) {
  if (const auto* object = value.get<Value::Object>()) {
    if (!*object) return std::nullopt;
    return uri((*object)->objectID());
  }
  if (const auto* id = value.get<ManagedObjectID>()) return uri(*id);
  if (const auto* array = value.get<Value::Array>()) {
    ErrorUserInfoArray result;
    for (const Value& member : *array) {
      if (auto kept = sanitized(member)) result.push_back(std::move(*kept));
    }
    return wrapped(std::move(result));
  }
  return wrapped(value);
}

ErrorUserInfo sanitizedDictionary(const ErrorUserInfo& dictionary) {
  ErrorUserInfo result;
  for (const auto& [key, member] : dictionary) {
    if (auto kept = sanitized(member)) result.emplace(key, std::move(*kept));
  }
  return result;
}

std::optional<ErrorUserInfoValue> sanitized(const std::any& value) {
  if (const auto* object = std::any_cast<ManagedObjectPointer>(&value)) {
    if (!*object) return std::nullopt;
    return uri((*object)->objectID());
  }
  if (const auto* id = std::any_cast<ManagedObjectID>(&value)) return uri(*id);
  if (const auto* error = std::any_cast<std::shared_ptr<const Error>>(&value)) {
    if (!*error) return std::nullopt;
    return detachedNested(**error);
  }
  if (const auto* error = std::any_cast<std::shared_ptr<Error>>(&value)) {
    if (!*error) return std::nullopt;
    return detachedNested(**error);
  }
  if (const auto* error = std::any_cast<Error>(&value)) return detachedNested(*error);

  // Plain values stay as they are.
  if (const auto* text = std::any_cast<std::string>(&value)) return *text;
  if (const auto* number = std::any_cast<std::int64_t>(&value)) return *number;
  if (const auto* number = std::any_cast<int>(&value)) return std::int64_t{*number};
  if (const auto* number = std::any_cast<double>(&value)) return *number;
  if (const auto* texts = std::any_cast<std::vector<std::string>>(&value)) return *texts;
  if (std::any_cast<bool>(&value) != nullptr || std::any_cast<Date>(&value) != nullptr ||
      std::any_cast<Data>(&value) != nullptr || std::any_cast<URL>(&value) != nullptr ||
      std::any_cast<UUID>(&value) != nullptr || std::any_cast<std::monostate>(&value) != nullptr ||
      std::any_cast<std::nullptr_t>(&value) != nullptr) {
    return wrapped(value);
  }
  if (const auto* stored = std::any_cast<Value>(&value)) return sanitized(*stored);

  // Collections are rebuilt from what is left of their members.
  if (const auto* array = std::any_cast<ErrorUserInfoArray>(&value)) {
    ErrorUserInfoArray result;
    for (const auto& member : *array) {
      if (auto kept = sanitized(member)) result.push_back(std::move(*kept));
    }
    return wrapped(std::move(result));
  }
  if (const auto* dictionary = std::any_cast<ErrorUserInfo>(&value)) return wrapped(sanitizedDictionary(*dictionary));
  if (const auto* array = std::any_cast<std::vector<std::any>>(&value)) {
    ErrorUserInfoArray result;
    for (const auto& member : *array) {
      if (auto kept = sanitized(member)) result.push_back(std::move(*kept));
    }
    return wrapped(std::move(result));
  }
  if (const auto* objects = std::any_cast<std::vector<ManagedObjectPointer>>(&value)) return sanitizedArray(*objects);
  if (const auto* objects = std::any_cast<ManagedObjectSet>(&value)) return sanitizedArray(*objects);
  if (const auto* ids = std::any_cast<std::vector<ManagedObjectID>>(&value)) return sanitizedArray(*ids);
  if (const auto* ids = std::any_cast<ManagedObjectIDSet>(&value)) return sanitizedArray(*ids);
  if (const auto* conflicts = std::any_cast<std::vector<MergeConflict>>(&value)) return sanitizedArray(*conflicts);
  if (const auto* conflicts = std::any_cast<std::vector<ConstraintConflict>>(&value)) {
    return sanitizedArray(*conflicts);
  }
  if (const auto* errors = std::any_cast<std::vector<std::shared_ptr<const Error>>>(&value)) {
    return sanitizedArray(*errors);
  }
  return std::nullopt;
}

std::optional<ErrorUserInfoValue> sanitized(const ErrorUserInfoValue& value) {
  if (const auto* object = std::get_if<ErrorUserInfoObject>(&value)) return sanitized(object->value);
  return value;
}

// The conflict records under the save-conflicts key as a count and the URIs
// of their objects; false when the value is not an array of conflicts.
bool writeConflicts(const ErrorUserInfoValue& value, ErrorUserInfo& userInfo) {
  const auto* object = std::get_if<ErrorUserInfoObject>(&value);
  if (object == nullptr) return false;
  std::int64_t count = 0;
  std::vector<std::string> uris;
  if (const auto* conflicts = std::any_cast<std::vector<MergeConflict>>(&object->value)) {
    count = static_cast<std::int64_t>(conflicts->size());
    for (const MergeConflict& conflict : *conflicts) {
      if (conflict.sourceObject) uris.push_back(uri(conflict.sourceObject->objectID()));
    }
  } else if (const auto* constraints = std::any_cast<std::vector<ConstraintConflict>>(&object->value)) {
    count = static_cast<std::int64_t>(constraints->size());
    for (const ConstraintConflict& conflict : *constraints) {
      for (const auto& conflicting : conflict.conflictingObjects) {
        if (conflicting) uris.push_back(uri(conflicting->objectID()));
      }
    }
  } else {
    return false;
  }
  userInfo.insert_or_assign(std::string(saveConflictCountKey), count);
  userInfo.insert_or_assign(std::string(saveConflictObjectURIsKey), std::move(uris));
  return true;
}

// The object a validation error is about as its URI and entity name; false
// when the value is not a managed object.
bool writeValidationObject(const ErrorUserInfoValue& value, ErrorUserInfo& userInfo) {
  const auto* object = std::get_if<ErrorUserInfoObject>(&value);
  if (object == nullptr) return false;
  const auto* managedObject = std::any_cast<ManagedObjectPointer>(&object->value);
  if (managedObject == nullptr || !*managedObject) return false;
  userInfo.insert_or_assign(std::string(validationObjectURIKey), uri((*managedObject)->objectID()));
  userInfo.insert_or_assign(std::string(validationObjectEntityNameKey), (*managedObject)->entity().name());
  return true;
}

}  // namespace

bool holdsManagedObjects(const Error& error) {
  for (const auto& entry : error.userInfo()) {
    if (holds(entry.second)) return true;
  }
  return error.underlyingError() && holdsManagedObjects(*error.underlyingError());
}

Error detachedFromManagedObjects(const Error& error) {
  if (!holdsManagedObjects(error)) return error;
  ErrorUserInfo userInfo;
  for (const auto& [key, value] : error.userInfo()) {
    if (key == StoreError::kValidationObjectKey && writeValidationObject(value, userInfo)) continue;
    if (key == StoreError::kSaveConflictsKey && writeConflicts(value, userInfo)) continue;
    if (auto kept = sanitized(value)) userInfo.insert_or_assign(key, std::move(*kept));
  }
  userInfo.insert_or_assign(std::string(NSLocalizedDescriptionKey), error.localizedDescription());
  std::shared_ptr<const Error> underlying;
  if (error.underlyingError()) {
    underlying = std::make_shared<const Error>(detachedFromManagedObjects(*error.underlyingError()));
  }
  return Error(error.domain(), error.code(), error.localizedDescription(), std::move(userInfo),
               std::move(underlying));
}

}  // namespace kestrona
