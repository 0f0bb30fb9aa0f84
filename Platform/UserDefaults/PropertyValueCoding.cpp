#include "Platform/UserDefaults/PropertyValueCoding.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace kestrona {

namespace {

constexpr std::string_view kBase64Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string encodeBase64(const PropertyValue::Data& data) {
  std::string text;
  text.reserve((data.size() + 2) / 3 * 4);
  std::size_t index = 0;
  for (; index + 3 <= data.size(); index += 3) {
    const std::uint32_t group = (data[index] << 16) | (data[index + 1] << 8) | data[index + 2];
    for (int shift = 18; shift >= 0; shift -= 6) text += kBase64Alphabet[(group >> shift) & 0x3F];
  }
  const std::size_t rest = data.size() - index;
  if (rest > 0) {
    std::uint32_t group = data[index] << 16;
    if (rest == 2) group |= data[index + 1] << 8;
    text += kBase64Alphabet[(group >> 18) & 0x3F];
    text += kBase64Alphabet[(group >> 12) & 0x3F];
    text += rest == 2 ? kBase64Alphabet[(group >> 6) & 0x3F] : '=';
    text += '=';
  }
  return text;
}

PropertyValue::Data decodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) throw PropertyValueCodingError("Base64 data of a length that is not a multiple of 4");
  std::array<int, 256> digits;
  digits.fill(-1);
  for (std::size_t index = 0; index < kBase64Alphabet.size(); ++index) {
    digits[static_cast<unsigned char>(kBase64Alphabet[index])] = static_cast<int>(index);
  }
  std::size_t padding = 0;
  if (!text.empty() && text.back() == '=') padding = text.size() >= 2 && text[text.size() - 2] == '=' ? 2 : 1;
  PropertyValue::Data data;
  data.reserve(text.size() / 4 * 3);
  for (std::size_t index = 0; index < text.size(); index += 4) {
    std::uint32_t group = 0;
    for (std::size_t offset = 0; offset < 4; ++offset) {
      const std::size_t position = index + offset;
      int digit = 0;
      if (position >= text.size() - padding) {
        if (text[position] != '=') throw PropertyValueCodingError("Misplaced base64 padding");
      } else {
        digit = digits[static_cast<unsigned char>(text[position])];
        if (digit < 0) throw PropertyValueCodingError("A character outside the base64 alphabet");
      }
      group = (group << 6) | static_cast<std::uint32_t>(digit);
    }
    const bool last = index + 4 == text.size();
    const std::size_t bytes = last ? 3 - padding : 3;
    for (std::size_t byte = 0; byte < bytes; ++byte) {
      data.push_back(static_cast<std::uint8_t>(group >> (16 - 8 * byte)));
    }
  }
  return data;
}

nlohmann::json encodeDouble(double number) {
  if (std::isnan(number)) return {{"double", "nan"}};
  if (std::isinf(number)) return {{"double", number > 0 ? "inf" : "-inf"}};
  return number;
}

double decodeDouble(const nlohmann::json& json) {
  if (json.is_number()) return json.get<double>();
  if (json.is_string()) {
    const auto& text = json.get_ref<const std::string&>();
    if (text == "nan") return std::numeric_limits<double>::quiet_NaN();
    if (text == "inf") return std::numeric_limits<double>::infinity();
    if (text == "-inf") return -std::numeric_limits<double>::infinity();
  }
  throw PropertyValueCodingError("A number that is neither finite, nan, inf nor -inf");
}

}  // namespace

nlohmann::json encodePropertyValue(const PropertyValue& value) {
  switch (value.type()) {
    case PropertyValue::Type::boolean:
      return *value.getIf<bool>();
    case PropertyValue::Type::integer:
      return *value.getIf<std::int64_t>();
    case PropertyValue::Type::real:
      return encodeDouble(*value.getIf<double>());
    case PropertyValue::Type::string:
      return *value.getIf<std::string>();
    case PropertyValue::Type::data:
      return {{"data", encodeBase64(*value.getIf<PropertyValue::Data>())}};
    case PropertyValue::Type::date: {
      // Dates are finite in practice; a non-finite one keeps its value.
      return {{"date", encodeDouble(value.getIf<Date>()->timeIntervalSince1970())}};
    }
    case PropertyValue::Type::array: {
      nlohmann::json array = nlohmann::json::array();
      for (const PropertyValue& element : *value.getIf<PropertyValue::Array>()) {
        array.push_back(encodePropertyValue(element));
      }
      return array;
    }
    case PropertyValue::Type::dictionary: {
      nlohmann::json object = nlohmann::json::object();
      for (const auto& [key, element] : *value.getIf<PropertyValue::Dictionary>()) {
        object[key] = encodePropertyValue(element);
      }
      return {{"dictionary", std::move(object)}};
    }
  }
  throw PropertyValueCodingError("A property value of an unknown type");
}

PropertyValue decodePropertyValue(const nlohmann::json& json) {
  switch (json.type()) {
    case nlohmann::json::value_t::boolean:
      return json.get<bool>();
    case nlohmann::json::value_t::number_integer:
      return json.get<std::int64_t>();
    case nlohmann::json::value_t::number_unsigned: {
      const auto number = json.get<std::uint64_t>();
      if (number > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        throw PropertyValueCodingError("An integer beyond 64 bits");
      }
      return static_cast<std::int64_t>(number);
    }
    case nlohmann::json::value_t::number_float:
      return json.get<double>();
    case nlohmann::json::value_t::string:
      return json.get<std::string>();
    case nlohmann::json::value_t::array: {
      PropertyValue::Array array;
      array.reserve(json.size());
      for (const nlohmann::json& element : json) array.push_back(decodePropertyValue(element));
      return array;
    }
    case nlohmann::json::value_t::object: {
      if (json.size() != 1) throw PropertyValueCodingError("An object without exactly one kind key");
      const auto only = json.begin();
      const std::string& kind = only.key();
      const nlohmann::json& payload = only.value();
      if (kind == "data" && payload.is_string()) {
        return decodeBase64(payload.get_ref<const std::string&>());
      }
      if (kind == "date") return Date(decodeDouble(payload));
      if (kind == "double" && payload.is_string()) return decodeDouble(payload);
      if (kind == "dictionary" && payload.is_object()) {
        PropertyValue::Dictionary dictionary;
        for (const auto& [key, element] : payload.items()) dictionary.emplace(key, decodePropertyValue(element));
        return dictionary;
      }
      throw PropertyValueCodingError("An object of unknown kind \"" + kind + "\"");
    }
    default:
      throw PropertyValueCodingError("A JSON value that holds no property value");
  }
}

}  // namespace kestrona
