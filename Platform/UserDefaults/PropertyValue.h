// The values user defaults hold.
//
// A PropertyValue is one of: a boolean, a 64-bit integer, a 64-bit
// floating-point number, a text (UTF-8), binary data, a date, an array of
// values, or a dictionary from texts to values. Arrays and dictionaries nest
// to any depth. The type of a value is kept exactly: the integer 1, the
// number 1.0 and the boolean true are three different values, and they come
// back from a file as they went in.
//
// Values are plain C++ values: copy, compare and read them from any thread;
// a value must not be written by one thread while another reads it.
#pragma once

#include <concepts>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Platform/Time/Date.h"

namespace kestrona {

class PropertyValue {
 public:
  using Data = std::vector<std::uint8_t>;
  using Array = std::vector<PropertyValue>;
  using Dictionary = std::map<std::string, PropertyValue, std::less<>>;

  enum class Type { boolean, integer, real, string, data, date, array, dictionary };

  PropertyValue(bool value) : storage_(value) {}
  template <std::integral Integer>
    requires(!std::same_as<Integer, bool>)
  PropertyValue(Integer value) : storage_(static_cast<std::int64_t>(value)) {}
  PropertyValue(double value) : storage_(value) {}
  PropertyValue(const char* value) : storage_(std::string(value)) {}
  PropertyValue(std::string_view value) : storage_(std::string(value)) {}
  PropertyValue(std::string value) : storage_(std::move(value)) {}
  PropertyValue(Data value) : storage_(std::move(value)) {}
  PropertyValue(Date value) : storage_(value) {}
  PropertyValue(Array value) : storage_(std::move(value)) {}
  PropertyValue(Dictionary value) : storage_(std::move(value)) {}

  Type type() const noexcept { return static_cast<Type>(storage_.index()); }

  // The value as T, or null when it holds another type. T is one of bool,
  // std::int64_t, double, std::string, Data, Date, Array, Dictionary.
  template <typename T>
  const T* getIf() const noexcept {
    return std::get_if<T>(&storage_);
  }

  friend bool operator==(const PropertyValue&, const PropertyValue&) = default;

 private:
  // In the order of Type.
  std::variant<bool, std::int64_t, double, std::string, Data, Date, Array, Dictionary> storage_;
};

}  // namespace kestrona
