// The JSON form of the widget records.
//
// Every widget file is one JSON object encoded from a record. The rules are
// the same for all records and are kept here, so that each record's
// to_json/from_json only lists its keys:
//
// - Keys are the field names exactly as they stand.
// - An optional field without a value is left out; reading treats a missing
//   key and JSON null alike as no value.
// - A required key that is missing fails the whole decode with keyNotFound,
//   a required value that is null with valueNotFound.
// - Times are plain numbers, seconds since 1970, within the years 1970 to
//   9999 (isWidgetTime); numbers must be finite, and 32- and 64-bit integers
//   and 32-bit floats must fit their type. A value outside its range is
//   dataCorrupted when read and invalidValue when written, so that no file
//   this system writes is refused when read back.
// - Unknown keys are ignored.
//
// decodeWidgetRecord() and encodeWidgetRecord() are the entry points; they
// throw DecodingError and EncodingError (CodingError.h). The helpers in
// recordcoding are for the records' own to_json/from_json. All functions are
// pure and safe from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "WidgetData/Records/CodingError.h"

namespace kestrona {

// The first moment after the years a widget file may name: 10000-01-01
// 00:00:00 UTC, in seconds since 1970.
inline constexpr double kEndOfWidgetTime = 253402300800.0;

// Whether seconds since 1970 name a moment from 1970 to the end of 9999.
constexpr bool isWidgetTime(double seconds) { return seconds >= 0 && seconds < kEndOfWidgetTime; }

namespace recordcoding {

// A point in time of a record: seconds since 1970 that must be a widget
// time. Records read and write their times through the *Time helpers below.
struct Time {
  double seconds = 0;
};

// Throws typeMismatch (valueNotFound for null) unless value is a JSON object.
void expectObject(const nlohmann::json& value);

void decodeValue(const nlohmann::json& value, double& out);
void decodeValue(const nlohmann::json& value, float& out);
void decodeValue(const nlohmann::json& value, std::int64_t& out);
void decodeValue(const nlohmann::json& value, std::string& out);
void decodeValue(const nlohmann::json& value, Time& out);
template <typename Element>
void decodeValue(const nlohmann::json& value, std::vector<Element>& out);
// A record, through its own from_json.
template <typename Record>
void decodeValue(const nlohmann::json& value, Record& out);

void encodeValue(nlohmann::json& out, double value);
void encodeValue(nlohmann::json& out, float value);
void encodeValue(nlohmann::json& out, std::int64_t value);
void encodeValue(nlohmann::json& out, const std::string& value);
void encodeValue(nlohmann::json& out, Time value);
template <typename Element>
void encodeValue(nlohmann::json& out, const std::vector<Element>& values);
// A record, through its own to_json.
template <typename Record>
void encodeValue(nlohmann::json& out, const Record& record);

// Throws valueNotFound when value is null, and typeMismatch otherwise;
// expected names what was wanted ("a list").
[[noreturn]] void throwMismatch(const nlohmann::json& value, std::string_view expected);
// Throws keyNotFound naming key.
[[noreturn]] void throwKeyNotFound(std::string_view key);
// The position of a list element in a coding path: "Index 3".
std::string indexKey(std::size_t index);

template <typename Element>
void decodeValue(const nlohmann::json& value, std::vector<Element>& out) {
  if (!value.is_array()) throwMismatch(value, "a list");
  out.clear();
  out.reserve(value.size());
  for (std::size_t index = 0; index < value.size(); ++index) {
    Element element{};
    try {
      decodeValue(value[index], element);
    } catch (const DecodingError& error) {
      throw error.prependingCodingKey(indexKey(index));
    }
    out.push_back(std::move(element));
  }
}

template <typename Record>
void decodeValue(const nlohmann::json& value, Record& out) {
  from_json(value, out);
}

template <typename Element>
void encodeValue(nlohmann::json& out, const std::vector<Element>& values) {
  out = nlohmann::json::array();
  for (std::size_t index = 0; index < values.size(); ++index) {
    nlohmann::json element;
    try {
      encodeValue(element, values[index]);
    } catch (const EncodingError& error) {
      throw error.prependingCodingKey(indexKey(index));
    }
    out.push_back(std::move(element));
  }
}

template <typename Record>
void encodeValue(nlohmann::json& out, const Record& record) {
  to_json(out, record);
}

// The value under key, which must be there and not null.
template <typename Value>
Value decodeRequired(const nlohmann::json& object, std::string_view key) {
  auto found = object.find(std::string(key));
  if (found == object.end()) throwKeyNotFound(key);
  Value value{};
  try {
    decodeValue(*found, value);
  } catch (const DecodingError& error) {
    throw error.prependingCodingKey(key);
  }
  return value;
}

// The value under key, or none when the key is missing or its value is null.
template <typename Value>
std::optional<Value> decodeOptional(const nlohmann::json& object, std::string_view key) {
  auto found = object.find(std::string(key));
  if (found == object.end() || found->is_null()) return std::nullopt;
  Value value{};
  try {
    decodeValue(*found, value);
  } catch (const DecodingError& error) {
    throw error.prependingCodingKey(key);
  }
  return value;
}

template <typename Value>
void encodeRequired(nlohmann::json& object, std::string_view key, const Value& value) {
  nlohmann::json encoded;
  try {
    encodeValue(encoded, value);
  } catch (const EncodingError& error) {
    throw error.prependingCodingKey(key);
  }
  object[std::string(key)] = std::move(encoded);
}

// Leaves the key out when value has none.
template <typename Value>
void encodeOptional(nlohmann::json& object, std::string_view key, const std::optional<Value>& value) {
  if (value) encodeRequired(object, key, *value);
}

inline double decodeRequiredTime(const nlohmann::json& object, std::string_view key) {
  return decodeRequired<Time>(object, key).seconds;
}

inline std::optional<double> decodeOptionalTime(const nlohmann::json& object, std::string_view key) {
  std::optional<Time> time = decodeOptional<Time>(object, key);
  if (!time) return std::nullopt;
  return time->seconds;
}

inline void encodeRequiredTime(nlohmann::json& object, std::string_view key, double seconds) {
  encodeRequired(object, key, Time{seconds});
}

inline void encodeOptionalTime(nlohmann::json& object, std::string_view key, const std::optional<double>& seconds) {
  if (seconds) encodeRequiredTime(object, key, *seconds);
}

// The JSON text of bytes; throws dataCorrupted when it is not one JSON value
// with nothing but white space after it.
nlohmann::json parse(std::string_view bytes);
// Compact JSON text; throws EncodingError for text that is not UTF-8.
std::string serialize(const nlohmann::json& value);

}  // namespace recordcoding

// The record of type Record encoded in bytes. Throws DecodingError.
template <typename Record>
Record decodeWidgetRecord(std::string_view bytes) {
  nlohmann::json value = recordcoding::parse(bytes);
  Record record{};
  recordcoding::decodeValue(value, record);
  return record;
}

// The compact JSON text of record. Throws EncodingError.
template <typename Record>
std::string encodeWidgetRecord(const Record& record) {
  nlohmann::json value;
  recordcoding::encodeValue(value, record);
  return recordcoding::serialize(value);
}

}  // namespace kestrona
