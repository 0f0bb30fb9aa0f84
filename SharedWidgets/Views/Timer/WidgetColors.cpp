#include "SharedWidgets/Views/Timer/WidgetColors.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "SharedCore/Support/Colors/ColorHexParsing.h"
#include "SharedCore/Support/Colors/NamedColors.h"

namespace kestrona {

const Color& WidgetColors::background() {
  static const Color color = Color::black();
  return color;
}

const Color& WidgetColors::tertiaryBackground() {
  static const Color color = Color::black();
  return color;
}

const Color& WidgetColors::secondaryBackground() {
  static const Color color = colorFromHexString("F2F2F7");
  return color;
}

const Color& WidgetColors::secondaryLabel() {
  static const Color color = NamedColors::secondaryLabel();
  return color;
}

const Color& WidgetColors::separatorColor() {
  static const Color color = NamedColors::separator();
  return color;
}

Color withOpacity(const Color& color, double opacity) {
  const double factor = std::isnan(opacity) ? 0.0 : std::clamp(opacity, 0.0, 1.0);
  if (color.isDynamic()) {
    // Dynamic colours are equal when their names are, so the name tells the
    // factor too.
    return Color::dynamic(
        color.name() + " at opacity " + std::to_string(factor),
        [color, factor](const Appearance& appearance) { return withOpacity(color.resolved(appearance), factor); });
  }
  const RGBAComponents components = color.components();
  const double alpha = components.alpha * factor;
  return color.colorSpace() == ColorSpace::displayP3
             ? Color::displayP3(components.red, components.green, components.blue, alpha)
             : Color::deviceRGB(components.red, components.green, components.blue, alpha);
}

}  // namespace kestrona
