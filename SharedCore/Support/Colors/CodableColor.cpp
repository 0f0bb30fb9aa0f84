#include "SharedCore/Support/Colors/CodableColor.h"

#include <nlohmann/json.hpp>

namespace kestrona {

namespace {

double requiredNumber(const nlohmann::json& json, const char* key) {
  const nlohmann::json& value = json.at(key);
  // The library would read a boolean as 0 or 1; a colour component must be
  // a number.
  if (!value.is_number()) {
    throw nlohmann::json::type_error::create(302, std::string("\"") + key + "\" must be a number", &value);
  }
  return value.get<double>();
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
  json = nlohmann::json{{"red", color.red}, {"green", color.green}, {"blue", color.blue}, {"alpha", color.alpha}};
}

void from_json(const nlohmann::json& json, CodableColor& color) {
  color.red = requiredNumber(json, "red");
  color.green = requiredNumber(json, "green");
  color.blue = requiredNumber(json, "blue");
  color.alpha = requiredNumber(json, "alpha");
}

}  // namespace kestrona
