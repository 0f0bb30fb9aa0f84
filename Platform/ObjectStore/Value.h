// One value held by a managed object's property or passed to a predicate.
//
// A Value is nil, a boolean, a 64-bit integer (all integer widths), a
// double, a string, a Date, binary Data, an object ID, a managed object, or
// an array of values (a set argument is an array too: order never matters to
// IN). Integers and doubles compare by number; everything else compares only
// with its own kind. Values are plain values: copying one is safe from any
// thread, except that a Value holding a managed object must stay on that
// object's context queue.
#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Platform/ObjectStore/ManagedObjectID.h"
#include "Platform/Time/Date.h"

namespace kestrona {

class ManagedObject;

// Binary data, as stored in a BLOB column.
struct Data {
  std::vector<std::uint8_t> bytes;
  friend bool operator==(const Data&, const Data&) = default;
};

class Value {
 public:
  using Array = std::vector<Value>;
  using Object = std::shared_ptr<ManagedObject>;
  using Storage = std::variant<std::monostate, bool, std::int64_t, double, std::string, Date, Data,
                               ManagedObjectID, Object, Array>;

  Value() = default;
  Value(std::nullptr_t) {}
  Value(bool value) : storage_(value) {}
  Value(int value) : storage_(std::int64_t{value}) {}
  Value(std::int64_t value) : storage_(value) {}
  Value(double value) : storage_(value) {}
  Value(std::string value) : storage_(std::move(value)) {}
  Value(const char* value) : storage_(std::string(value)) {}
  Value(Date value) : storage_(value) {}
  Value(Data value) : storage_(std::move(value)) {}
  Value(ManagedObjectID value) : storage_(std::move(value)) {}
  Value(Object value);
  Value(Array value) : storage_(std::move(value)) {}

  bool isNil() const noexcept { return std::holds_alternative<std::monostate>(storage_); }
  const Storage& storage() const noexcept { return storage_; }

  template <typename T>
  const T* get() const noexcept {
    return std::get_if<T>(&storage_);
  }

  // The number held by a boolean, integer or double; none otherwise.
  std::optional<double> number() const noexcept;
  // The object ID of an ID value or of an object value; none otherwise.
  std::optional<ManagedObjectID> objectID() const;

  // Equality of the format language: numbers (and booleans) by value, an
  // object equals its own ID, nil equals only nil.
  friend bool operator==(const Value& lhs, const Value& rhs);

  // Ordering of the format language for <, <=, >, >=: defined between two
  // numbers, two dates or two strings; unordered (nil, mixed kinds) otherwise.
  friend std::partial_ordering operator<=>(const Value& lhs, const Value& rhs);

  // A short text for logs and test failures.
  std::string description() const;

 private:
  Storage storage_;
};

}  // namespace kestrona
