#include "SharedCore/Support/Colors/CodableColor.h"

#include <cmath>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

namespace kestrona {

namespace {

double requiredNumber(const nlohmann::json& json, const char* key) {
  const auto found = json.find(key);
  if (found == json.end()) {
    throw ColorDecodingError(ColorDecodingError::Code::keyNotFound, {key},
                             std::string("No value associated with key \"") + key + "\".");
  }
  if (found->is_null()) {
    throw ColorDecodingError(ColorDecodingError::Code::valueNotFound, {key},
                             "Expected a number but found null instead.");
  }
  // The library would read a boolean as 0 or 1; a colour component must be
  // a number.
  if (!found->is_number()) {
    throw ColorDecodingError(ColorDecodingError::Code::typeMismatch, {key},
                             std::string("Expected to decode a number but found ") + found->type_name() + " instead.");
  }
  return found->get<double>();
}

}  // namespace

CodableColor::CodableColor(const Color& color) {
  const RGBAComponents components = color.components();
  red = components.red;
  green = components.green;
  blue = components.blue;
  alpha = components.alpha;
}

Color CodableColor::color() const { return Color::rgb(red, green, blue, alpha); }

void to_json(nlohmann::json& json, const CodableColor& color) {
  const std::pair<const char*, double> components[] = {
      {"red", color.red}, {"green", color.green}, {"blue", color.blue}, {"alpha", color.alpha}};
  for (const auto& [key, value] : components) {
    if (!std::isfinite(value)) {
      throw ColorEncodingError(ColorEncodingError::Code::invalidValue, {key},
                               "Unable to encode " + std::to_string(value) + " directly in JSON.");
    }
  }
  json = nlohmann::json{{"red", color.red}, {"green", color.green}, {"blue", color.blue}, {"alpha", color.alpha}};
}

void from_json(const nlohmann::json& json, CodableColor& color) {
  if (!json.is_object()) {
    throw ColorDecodingError(ColorDecodingError::Code::typeMismatch, {},
                             std::string("Expected to decode a dictionary but found ") + json.type_name() +
                                 " instead.");
  }
  // Read all four before changing color, so that a failure leaves it as it was.
  const double red = requiredNumber(json, "red");
  const double green = requiredNumber(json, "green");
  const double blue = requiredNumber(json, "blue");
  const double alpha = requiredNumber(json, "alpha");
  color = CodableColor(red, green, blue, alpha);
}

}  // namespace kestrona
