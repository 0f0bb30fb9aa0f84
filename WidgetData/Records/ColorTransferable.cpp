#include "WidgetData/Records/ColorTransferable.h"

#include <functional>

#include "SharedCore/Support/Colors/ColorConversion.h"
#include "WidgetData/Records/RecordCoding.h"

namespace kestrona {

Color ColorTransferable::color() const {
  return Color::rgb(redComponent, greenComponent, blueComponent, alphaComponent);
}

ColorTransferable toTransferable(const Color& color) {
  RGBAComponents components = toRGBAComponents(color);
  return ColorTransferable{components.red, components.green, components.blue, components.alpha};
}

void to_json(nlohmann::json& json, const ColorTransferable& color) {
  json = nlohmann::json::object();
  recordcoding::encodeRequired(json, "redComponent", color.redComponent);
  recordcoding::encodeRequired(json, "greenComponent", color.greenComponent);
  recordcoding::encodeRequired(json, "blueComponent", color.blueComponent);
  recordcoding::encodeRequired(json, "alphaComponent", color.alphaComponent);
}

void from_json(const nlohmann::json& json, ColorTransferable& color) {
  recordcoding::expectObject(json);
  color.redComponent = recordcoding::decodeRequired<double>(json, "redComponent");
  color.greenComponent = recordcoding::decodeRequired<double>(json, "greenComponent");
  color.blueComponent = recordcoding::decodeRequired<double>(json, "blueComponent");
  color.alphaComponent = recordcoding::decodeRequired<double>(json, "alphaComponent");
}

}  // namespace kestrona

std::size_t std::hash<kestrona::ColorTransferable>::operator()(
    const kestrona::ColorTransferable& color) const noexcept {
  std::hash<double> hashDouble;
  std::size_t seed = 0;
  for (double component : {color.redComponent, color.greenComponent, color.blueComponent, color.alphaComponent}) {
    seed ^= hashDouble(component) + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
  }
  return seed;
}
