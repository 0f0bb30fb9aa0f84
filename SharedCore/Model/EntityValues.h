// Small conversions between the store's values and the entity classes'
// typed accessors.
//
// valueOf: an optional attribute value or an object (null: nil) as the
// store's Value, for setValue.
//
// objectsOfClass: the objects of a to-many relationship as the entity class
// they are. Objects of another class (only possible when the classes were
// not registered) are left out rather than cast blindly.
//
// sortedByOrder: objects with an order() by ascending order, stable over
// the order they came in, with no tie-break of its own; each order is read
// once.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Platform/ObjectStore/ManagedObject.h"

namespace kestrona {

template <typename T>
Value valueOf(const std::optional<T>& value) {
  return value ? Value(*value) : Value();
}

template <typename Class>
Value valueOf(const std::shared_ptr<Class>& object) {
  return object ? Value(std::static_pointer_cast<ManagedObject>(object)) : Value();
}

template <typename Class>
std::vector<std::shared_ptr<Class>> objectsOfClass(std::vector<std::shared_ptr<ManagedObject>> objects) {
  std::vector<std::shared_ptr<Class>> result;
  result.reserve(objects.size());
  for (auto& object : objects) {
    if (auto typed = std::dynamic_pointer_cast<Class>(std::move(object))) result.push_back(std::move(typed));
  }
  return result;
}

template <typename Class>
std::vector<std::shared_ptr<Class>> sortedByOrder(std::vector<std::shared_ptr<Class>> objects) {
  std::vector<std::pair<decltype(objects.front()->order()), std::shared_ptr<Class>>> keyed;
  keyed.reserve(objects.size());
  for (auto& object : objects) keyed.emplace_back(object->order(), std::move(object));
  std::stable_sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  for (std::size_t index = 0; index < keyed.size(); ++index) objects[index] = std::move(keyed[index].second);
  return objects;
}

}  // namespace kestrona
