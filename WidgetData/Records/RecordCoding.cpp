#include "WidgetData/Records/RecordCoding.h"

#include <cmath>
#include <limits>
#include <memory>

namespace kestrona::recordcoding {
namespace {

// A number as JSON writes it, for messages.
std::string numberText(const nlohmann::json& value) { return value.dump(); }

[[noreturn]] void throwDoesNotFit(const nlohmann::json& value, std::string_view typeName) {
  throw DecodingError(DecodingError::Code::dataCorrupted, {},
                      "Parsed JSON number <" + numberText(value) + "> does not fit in " + std::string(typeName) + ".");
}

[[noreturn]] void throwNotEncodable(double value) {
  throw EncodingError(EncodingError::Code::invalidValue, {},
                      "Unable to encode " + std::to_string(value) + " directly in JSON.");
}

constexpr std::string_view kTimeRange = "the years 1970 to 9999";

}  // namespace

void throwMismatch(const nlohmann::json& value, std::string_view expected) {
  if (value.is_null()) {
    throw DecodingError(DecodingError::Code::valueNotFound, {},
                        "Expected " + std::string(expected) + " but found null instead.");
  }
  throw DecodingError(DecodingError::Code::typeMismatch, {},
                      "Expected to decode " + std::string(expected) + " but found " + value.type_name() +
                          " instead.");
}

void throwKeyNotFound(std::string_view key) {
  throw DecodingError(DecodingError::Code::keyNotFound, {std::string(key)},
                      "No value associated with key \"" + std::string(key) + "\".");
}

std::string indexKey(std::size_t index) { return "Index " + std::to_string(index); }

void expectObject(const nlohmann::json& value) {
  if (!value.is_object()) throwMismatch(value, "an object");
}

void decodeValue(const nlohmann::json& value, double& out) {
  switch (value.type()) {
    case nlohmann::json::value_t::number_integer:
      out = static_cast<double>(value.get<std::int64_t>());
      return;
    case nlohmann::json::value_t::number_unsigned:
      out = static_cast<double>(value.get<std::uint64_t>());
      return;
    case nlohmann::json::value_t::number_float:
      out = value.get<double>();
      if (!std::isfinite(out)) throwDoesNotFit(value, "Double");
      return;
    default:
      throwMismatch(value, "a number");
  }
}

void decodeValue(const nlohmann::json& value, float& out) {
  double wide = 0;
  decodeValue(value, wide);
  // Narrowing rounds to the nearest 32-bit value, which is what a writer
  // that widened a 32-bit number gets back exactly.
  if (std::fabs(wide) > static_cast<double>(std::numeric_limits<float>::max())) throwDoesNotFit(value, "Float");
  out = static_cast<float>(wide);
}

void decodeValue(const nlohmann::json& value, std::int64_t& out) {
  switch (value.type()) {
    case nlohmann::json::value_t::number_integer:
      out = value.get<std::int64_t>();
      return;
    case nlohmann::json::value_t::number_unsigned: {
      auto unsignedValue = value.get<std::uint64_t>();
      if (unsignedValue > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        throwDoesNotFit(value, "Int64");
      }
      out = static_cast<std::int64_t>(unsignedValue);
      return;
    }
    case nlohmann::json::value_t::number_float: {
      // A whole number written with a fraction part ("2.0") is accepted.
      // Integers beyond the range reach here as the nearest double, and
      // -2^63 is also where "-9223372036854775809" lands: a double at either
      // bound can't tell a fitting number from one that does not, so both
      // are refused. Written as an integer, -9223372036854775808 still fits.
      double wide = value.get<double>();
      constexpr double kLimit = 9223372036854775808.0;
      if (!std::isfinite(wide) || wide != std::trunc(wide) || wide >= kLimit || wide <= -kLimit) {
        throwDoesNotFit(value, "Int64");
      }
      out = static_cast<std::int64_t>(wide);
      return;
    }
    default:
      throwMismatch(value, "an integer");
  }
}

void decodeValue(const nlohmann::json& value, std::string& out) {
  if (!value.is_string()) throwMismatch(value, "a string");
  out = value.get_ref<const std::string&>();
}

void decodeValue(const nlohmann::json& value, Time& out) {
  decodeValue(value, out.seconds);
  if (!isWidgetTime(out.seconds)) {
    throw DecodingError(DecodingError::Code::dataCorrupted, {},
                        "Date <" + numberText(value) + "> lies outside " + std::string(kTimeRange) + ".");
  }
}

void encodeValue(nlohmann::json& out, Time value) {
  if (!isWidgetTime(value.seconds)) {
    throw EncodingError(EncodingError::Code::invalidValue, {},
                        "Date " + nlohmann::json(value.seconds).dump() + " lies outside " + std::string(kTimeRange) +
                            ".");
  }
  encodeValue(out, value.seconds);
}

void encodeValue(nlohmann::json& out, double value) {
  if (!std::isfinite(value)) throwNotEncodable(value);
  out = value;
}

void encodeValue(nlohmann::json& out, float value) {
  if (!std::isfinite(value)) throwNotEncodable(value);
  // Written widened to 64 bits, which prints enough digits to read back as
  // exactly this 32-bit value.
  out = static_cast<double>(value);
}

void encodeValue(nlohmann::json& out, std::int64_t value) { out = value; }

void encodeValue(nlohmann::json& out, const std::string& value) { out = value; }

nlohmann::json parse(std::string_view bytes) {
  try {
    return nlohmann::json::parse(bytes.begin(), bytes.end());
  } catch (const nlohmann::json::parse_error& error) {
    auto underlying = std::make_shared<const Error>(
        "JSONParseError", error.id, error.what(),
        ErrorUserInfo{{"byteOffset", static_cast<std::int64_t>(error.byte)}});
    throw DecodingError(DecodingError::Code::dataCorrupted, {}, "The given data was not valid JSON.",
                        std::move(underlying));
  } catch (const nlohmann::json::exception& error) {
    // A number too large for any type ("1e999") is refused by the parser itself.
    auto underlying = std::make_shared<const Error>("JSONParseError", error.id, error.what());
    throw DecodingError(DecodingError::Code::dataCorrupted, {}, "The given data was not valid JSON.",
                        std::move(underlying));
  }
}

std::string serialize(const nlohmann::json& value) {
  try {
    return value.dump();
  } catch (const nlohmann::json::type_error& error) {
    throw EncodingError(EncodingError::Code::invalidValue, {},
                        std::string("Text that is not valid UTF-8 cannot be written: ") + error.what());
  }
}

}  // namespace kestrona::recordcoding
