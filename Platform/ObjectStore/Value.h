// One value held by a managed object's property or passed to a predicate.
//
// A Value is nil, a boolean, a 64-bit integer (all integer widths), a
// double, a string, a Date, binary Data, an object ID, a managed object, or
// an array of values (a set argument is an array too: order never matters to
// IN). Integers and doubles compare by number; everything else compares only
// with its own kind.
//
// A Value is 16 bytes, so that a loaded object's slots stay small: numbers,
// booleans and dates are held inline, the other kinds in an immutable,
// reference-counted box that copies share. Values are plain values: copying
// one is safe from any thread, except that a Value holding a managed object
// must stay on that object's context queue. get<T>() points into the value
// (or its box) and is valid while the Value lives.
#pragma once

#include <atomic>
#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
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

  Value() noexcept {}
  Value(std::nullptr_t) noexcept {}
  Value(bool value) noexcept : kind_(Kind::boolean) { payload_.boolean = value; }
  Value(int value) noexcept : Value(std::int64_t{value}) {}
  Value(std::int64_t value) noexcept : kind_(Kind::integer) { payload_.integer = value; }
  Value(double value) noexcept : kind_(Kind::real) { payload_.real = value; }
  Value(Date value) noexcept : kind_(Kind::date) { payload_.date = value; }
  Value(std::string value);
  Value(const char* value) : Value(std::string(value)) {}
  Value(Data value);
  Value(ManagedObjectID value);
  Value(Object value);
  Value(Array value);

  Value(const Value& other) noexcept;
  Value(Value&& other) noexcept;
  Value& operator=(const Value& other) noexcept;
  Value& operator=(Value&& other) noexcept;
  ~Value();

  bool isNil() const noexcept { return kind_ == Kind::nil; }

  // The value as T when it holds a T (bool, std::int64_t, double,
  // std::string, Date, Data, ManagedObjectID, Object or Array); null
  // otherwise.
  template <typename T>
  const T* get() const noexcept;

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
  enum class Kind : std::uint8_t { nil, boolean, integer, real, date, string, data, objectID, object, array };
  // What the boxed kinds share: the count of the Values holding the box.
  struct Box {
    std::atomic<std::uint32_t> references{1};
  };
  template <typename T>
  struct TypedBox : Box {
    explicit TypedBox(T held) : value(std::move(held)) {}
    const T value;
  };

  template <typename T>
  static constexpr Kind kindOf();
  void release() noexcept;

  union Payload {
    Payload() : integer(0) {}
    bool boolean;
    std::int64_t integer;
    double real;
    Date date;
    Box* box;
  } payload_;
  Kind kind_ = Kind::nil;
};

template <typename T>
constexpr Value::Kind Value::kindOf() {
  if constexpr (std::is_same_v<T, bool>) return Kind::boolean;
  else if constexpr (std::is_same_v<T, std::int64_t>) return Kind::integer;
  else if constexpr (std::is_same_v<T, double>) return Kind::real;
  else if constexpr (std::is_same_v<T, Date>) return Kind::date;
  else if constexpr (std::is_same_v<T, std::string>) return Kind::string;
  else if constexpr (std::is_same_v<T, Data>) return Kind::data;
  else if constexpr (std::is_same_v<T, ManagedObjectID>) return Kind::objectID;
  else if constexpr (std::is_same_v<T, Object>) return Kind::object;
  else {
    static_assert(std::is_same_v<T, Array>, "a Value holds no such type");
    return Kind::array;
  }
}

template <typename T>
const T* Value::get() const noexcept {
  if (kind_ != kindOf<T>()) return nullptr;
  if constexpr (std::is_same_v<T, bool>) return &payload_.boolean;
  else if constexpr (std::is_same_v<T, std::int64_t>) return &payload_.integer;
  else if constexpr (std::is_same_v<T, double>) return &payload_.real;
  else if constexpr (std::is_same_v<T, Date>) return &payload_.date;
  else return &static_cast<const TypedBox<T>*>(payload_.box)->value;
}

}  // namespace kestrona
